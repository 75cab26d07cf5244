// The private library that decodes media, opened when it is first needed and kept until the process ends. The
// plug-in never links it, and runs without it.
#pragma once

#include <cstdint>
#include <string>

#include "OvnxMedia.h"

struct MediaModule {
    decltype(&OvnxMediaProbe) probe = nullptr;
    decltype(&OvnxMediaStillThumbnail) stillThumbnail = nullptr;
    decltype(&OvnxMediaVideoFrame) videoFrame = nullptr;
    decltype(&OvnxMediaRelease) release = nullptr;

    // The one of this product; null, and logged the first time, when it is not there whole. Any thread.
    static const MediaModule* Get();

    // Throws std::runtime_error when the library cannot be opened or lacks an export.
    explicit MediaModule(const std::string& path);
};
