// MP4 videos made in code: one track of Motion-JPEG frames, so that no encoder is needed.
#pragma once

#include <cstdint>
#include <string>

#include "sample-captures/Gradient.h"

namespace samples {

struct Mp4Options {
    uint16_t width = 640;
    uint16_t height = 360;
    uint32_t timeScale = 600;  // units per second
    uint32_t duration = 1200;  // in these units
    uint32_t frames = 12;      // spread evenly over the duration
    bool moovBehind = false;   // moov after mdat, as a recorder writes it, instead of before
    std::string tagc;          // the payload of moov/udta/tagc; empty for none
};

// The top colour passes into the bottom one over the frames. Throws std::invalid_argument when a side or the
// time scale is zero, or when there is no frame or less than one unit of time for each.
std::string Mp4Video(const Mp4Options& options, const Gradient& colours);

}  // namespace samples
