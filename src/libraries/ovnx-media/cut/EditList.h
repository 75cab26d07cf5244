// Which part of a track's own time line is shown when.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace ovnxmedia {

// Times from a file lie within this, in any unit, so that they can be added.
constexpr int64_t kFurthest = int64_t{1} << 56;

// In units of the track.
struct Edit {
    int64_t start;   // when it is shown, on the time line of the movie
    int64_t media;   // what is shown, on the time line of the track
    int64_t length;  // kFurthest for all that there is

    int64_t end() const { return start + length; }
};

// The edits that show something, in the order of the movie. `track` is the content of a "trak". Without a
// list the track is shown from its beginning. Throws Failure for a list that changes the speed.
std::vector<Edit> ReadEdits(std::string_view track, uint32_t trackUnit, uint32_t movieUnit);

// A complete "edts" that waits where nothing is shown.
std::string WriteEdits(const std::vector<Edit>& edits, uint32_t trackUnit, uint32_t movieUnit);

}  // namespace ovnxmedia
