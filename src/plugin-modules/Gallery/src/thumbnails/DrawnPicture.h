// What the media library draws, as a PNG.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "base/SlabMemory.h"
#include "libraries/ovnx-media/client/MediaLibrary.h"

struct DrawnPicture {
    KXP::SlabString png;  // empty when there is none
    uint32_t width = 0;
    uint32_t height = 0;
};

// A call of the library that fills a picture, and returns a status.
using Draw = std::function<int32_t(const OvnxMediaRequest* request, OvnxMediaPicture* picture)>;

// Calls it for a box in pixels. Where there is no picture, `error` says why. A set `cancelled` ends the call.
DrawnPicture DrawInBox(const ovnxmedia::MediaLibrary& media, uint32_t width, uint32_t height,
                       const std::atomic<bool>& cancelled, std::string& error, const Draw& draw);
