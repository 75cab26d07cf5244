// libovnxmedia as the product uses it: opened at run time, in a symbol scope of its own, and never linked.
#pragma once

#include <string>

#include "OvnxMedia.h"

namespace ovnxmedia {

struct MediaLibrary {
    // Opens the library in `folder` for good: it is never closed, because its dependencies keep
    // data of threads. Throws std::runtime_error, with the linker's reason, when it cannot be opened or lacks
    // an export.
    explicit MediaLibrary(const std::string& folder);

    decltype(&OvnxMediaProbe) probe = nullptr;
    decltype(&OvnxMediaStillThumbnail) stillThumbnail = nullptr;
    decltype(&OvnxMediaVideoFrame) videoFrame = nullptr;
    decltype(&OvnxMediaSharedThumbnail) sharedThumbnail = nullptr;
    decltype(&OvnxMediaSharedName) sharedName = nullptr;
    decltype(&OvnxMediaRelease) release = nullptr;
    decltype(&OvnxMediaRemux) remux = nullptr;
    decltype(&OvnxMediaKeyframes) keyframes = nullptr;
    decltype(&OvnxMediaConvert) convert = nullptr;
    decltype(&OvnxMediaPackets) packets = nullptr;
    decltype(&OvnxMediaReleasePacket) releasePacket = nullptr;
};

}  // namespace ovnxmedia
