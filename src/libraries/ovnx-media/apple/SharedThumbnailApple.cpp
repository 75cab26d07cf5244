#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/SharedThumbnail.h"

namespace ovnxmedia {

// No thumbnail has a name: the system keeps them behind its services.
std::string SharedName(const std::string&) {
    return "";
}

Picture DecodeShared(int, const OvnxMediaOrigin&, Size, const Budget&) {
    throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "there is no such cache");
}

}  // namespace ovnxmedia
