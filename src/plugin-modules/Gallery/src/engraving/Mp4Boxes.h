// The boxes of an MP4 (ISO/IEC 14496-12, 4.2) as far as it takes to put metadata into one: where the movie's
// boxes lie, and where there is room. Knows sources of bytes alone.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/media/ByteSource.h"

namespace engraving {

// A file that is not understood, or that has no room; the text is for the log.
class EngravingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Box {
    std::string type;         // four bytes
    uint64_t offset = 0;      // of its header
    uint64_t size = 0;        // with its header
    uint64_t headerSize = 8;  // 16 with a size of 64 bits

    uint64_t end() const { return offset + size; }
    uint64_t content() const { return offset + headerSize; }
    bool IsFree() const { return type == "free" || type == "skip"; }
};

struct Mp4Layout {
    Box movie;               // the first "moov", which is the one that players take
    std::vector<Box> parts;  // of the movie
    // Movies behind it, which an interrupted engraving has left.
    std::vector<Box> deadMovies;
    std::vector<Box> free;                  // outside of the movie
    std::optional<uint64_t> firstFragment;  // a "moof", ahead of which the movie has to stay
    uint64_t end = 0;  // of the last box; behind it lies at most what an interrupted engraving has left
};

// Reads the layout of a file of `size` bytes. Throws EngravingError for anything but a whole chain of boxes
// with a movie of whole boxes and a header in it.
Mp4Layout ReadLayout(media::ByteSource& source, uint64_t size);

// The boxes between two places, which they have to fill. A list of user data may end in 32 zero bits
// (QuickTime File Format, "User data atoms").
enum class ListEnd { Exact, MayBeZero };
std::vector<Box> ReadBoxes(media::ByteSource& source, uint64_t from, uint64_t to,
                           ListEnd end = ListEnd::Exact);

// Size and type of a box, for sizes of 32 bits.
std::string BoxHeader(uint64_t size, const std::string& type);

}  // namespace engraving
