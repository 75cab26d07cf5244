// What the remux does to the boxes of an MP4 file with its own hands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/Budget.h"

namespace ovnxmedia {

// The "udta" boxes of the first "moov", whole and in a row; empty when there are none. Throws Failure where
// they are too large, or the boxes do not lie within each other.
std::string ReadUserData(int fd, uint64_t fileSize, const Budget& budget);

// The "moov" of a file that FFmpeg has written, and where it and the free space behind it lie.
struct MovieRoom {
    uint64_t start = 0;
    uint64_t end = 0;
    std::string movie;  // the whole box
};
MovieRoom ReadMovieRoom(int fd, uint64_t fileSize);

// Finishes a whole "moov" box that FFmpeg has written, which takes all that it is given for shown:
// `durations` tells for each track where it ends, from the clip's beginning on, in units of the movie. The
// movie gets `userData` for its own "udta". Throws Failure when the box is not as it should be.
std::string FinishMovie(std::string_view movie, const std::vector<uint64_t>& durations,
                        std::string_view userData);

}  // namespace ovnxmedia
