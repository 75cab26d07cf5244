// Cuts a part out of an MP4 file by copying its packets.
#pragma once

#include <cstdint>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

// In units of 100 ns.
struct ClipRange {
    uint64_t start;
    uint64_t end;
    bool atKeyframe;  // starts at the keyframe before the start instead, and hides nothing
};

// As OvnxMediaRemux; throws Failure. What it needs of memory does not depend on the length of the input, but
// for the demuxer's tables.
void Remux(int input, int output, const ClipRange& range, const Budget& budget);

}  // namespace ovnxmedia
