// Where the keyframes of a video are, by the tables of its container: no frame is decoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

// In units of 100 ns.
struct KeyframeTimes {
    std::vector<int64_t> times;  // when they are shown, ascending
    int64_t frame = 0;           // the mean time from one frame to the next
};

// As OvnxMediaKeyframes, for at most `most` keyframes; throws Failure.
KeyframeTimes ReadKeyframes(int fd, size_t most, const Budget& budget);

}  // namespace ovnxmedia
