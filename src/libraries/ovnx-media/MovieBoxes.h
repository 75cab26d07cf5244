// What a remux reads and edits of an MP4 file's boxes itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// The "udta" boxes of the first "moov", complete and in a row; empty when there are none. Throws Failure when
// they are too large, or when boxes do not lie within each other.
std::string ReadUserData(SourceFile& file, const Budget& budget);

// The "moov" of a file that FFmpeg has written, and the range that it fills together with the free space
// after it.
struct MovieRoom {
    uint64_t start = 0;
    uint64_t end = 0;
    std::string movie;  // the complete box
};
MovieRoom ReadMovieRoom(SourceFile& file);

// Finishes a complete "moov" box that FFmpeg has written as if everything in it were shown. `durations` has
// for each track its end, in units of the movie from the beginning of the clip; `userData` replaces the
// movie's own "udta". Throws Failure when the box is not as expected.
std::string FinishMovie(std::string_view movie, const std::vector<uint64_t>& durations,
                        std::string_view userData);

}  // namespace ovnxmedia
