// The keyframes to choose a video's picture from, by the tables of its container.
#pragma once

#include <vector>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

// When they are shown, on the time line of the movie, in parts of a second.
struct ShownTimes {
    uint32_t unit = 1;
    std::vector<int64_t> times;
};

// The last keyframe at or before a tenth of the video, or else the first one, and those after it, at most
// `most`. Throws Failure, with OVNX_MEDIA_UNKNOWN_FORMAT for what is no MP4 file and for one whose tables are
// of an unknown kind.
ShownTimes KeyframesFromTenth(int fd, size_t most, const Budget& budget);

}  // namespace ovnxmedia
