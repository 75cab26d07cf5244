#include "libraries/ovnx-media/client/MediaLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

#include "base/LibraryLoading.h"

namespace ovnxmedia {
namespace {

template <typename Function>
void Find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) throw std::runtime_error(std::string("libovnxmedia has no ") + name);
}

}  // namespace

MediaLibrary::MediaLibrary(const std::string& folder) {
    const std::string path = folder + "/libovnxmedia" + KXP::Platform::kLibrarySuffix;
    void* const library =
        dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE | KXP::Platform::OwnScopeFlag());
    if (!library) throw std::runtime_error(dlerror());
    Find(library, "OvnxMediaProbe", probe);
    Find(library, "OvnxMediaStillThumbnail", stillThumbnail);
    Find(library, "OvnxMediaVideoFrame", videoFrame);
    Find(library, "OvnxMediaSharedThumbnail", sharedThumbnail);
    Find(library, "OvnxMediaSharedName", sharedName);
    Find(library, "OvnxMediaRelease", release);
    Find(library, "OvnxMediaRemux", remux);
    Find(library, "OvnxMediaKeyframes", keyframes);
    Find(library, "OvnxMediaConvert", convert);
    Find(library, "OvnxMediaPackets", packets);
    Find(library, "OvnxMediaReleasePacket", releasePacket);
}

}  // namespace ovnxmedia
