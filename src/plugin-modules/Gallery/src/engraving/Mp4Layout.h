// Where the boxes of an MP4 lie, as far as an engraving needs to know: the movie's parts, and where there is
// room for more. Works on sources of bytes, not on files.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

#include "libraries/media-bytes/Boxes.h"

namespace engraving {

using media::Box;

// A file that is not understood, or that has no room; the text is for the log.
class EngravingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Mp4Layout {
    Box movie;                              // the first "moov", which is the one that players use
    std::vector<Box> parts;                 // of the movie
    std::vector<Box> deadMovies;            // after the first, left by an interrupted engraving
    std::vector<Box> free;                  // outside the movie
    std::optional<uint64_t> firstFragment;  // a "moof"; the movie has to stay before it
    // The first "udta" or "tagc" outside the movie. Readers do not see past it.
    std::optional<uint64_t> outerUserData;
    uint64_t end = 0;  // of the last box; at most the remains of an interrupted engraving follow
};

// Reads the layout of a file of `size` bytes. Throws EngravingError unless the file is a complete chain of
// boxes with a movie that consists of whole boxes, has a header and a track, and no tags beside its user
// data.
Mp4Layout ReadLayout(media::ByteSource& source, uint64_t size);

// The boxes between two positions, which they must fill. A list of user data may end with 32 zero bits
// (QuickTime File Format, "User data atoms"). Throws EngravingError.
enum class ListEnd { Exact, MayBeZero };
std::vector<Box> ReadBoxes(media::ByteSource& source, uint64_t from, uint64_t to,
                           ListEnd end = ListEnd::Exact);

}  // namespace engraving
