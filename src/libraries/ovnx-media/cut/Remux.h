// Cuts a part out of an MP4 file by copying its samples.
#pragma once

#include <cstdint>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

// In units of 100 ns.
struct ClipRange {
    uint64_t start;
    uint64_t end;
    bool atKeyframe;     // start at the keyframe before `start` instead and hide nothing
    bool asMp4 = false;  // also name the format's later form, of a movie in its first one
};

// As OvnxMediaRemux; throws Failure. Returns how many tracks were left out because they have nothing in the
// range. Apart from the tables, the memory that it needs does not depend on the length of the input.
uint32_t Remux(int input, int output, const ClipRange& range, const Budget& budget);

}  // namespace ovnxmedia
