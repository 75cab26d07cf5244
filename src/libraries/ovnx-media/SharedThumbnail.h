// Thumbnails that other programs have made, in the cache that the programs of a desktop share by the
// Thumbnail Managing Standard. Anybody may have written anything there.
#pragma once

#include <string>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// The name of the thumbnail's file in each of the cache's folders: the digest of the URI, and ".png".
std::string SharedName(const std::string& uri);

// Averages a shared thumbnail down to fit inside `box`. Throws Failure, with OVNX_MEDIA_UNKNOWN_FORMAT for
// a thumbnail of anything but `origin`, and for one that fits already: its source may be larger.
Picture DecodeShared(int fd, const OvnxMediaOrigin& origin, Size box, const Budget& budget);

}  // namespace ovnxmedia
