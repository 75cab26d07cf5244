// The strict walk over the boxes of an MP4 file (ISO/IEC 14496-12, 4.2). No size is believed before it has
// been checked against what surrounds the box.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "libraries/media-bytes/ByteSource.h"

namespace media {

struct Box {
    std::string type;         // four bytes
    uint64_t offset = 0;      // of the header
    uint64_t size = 0;        // including the header
    uint64_t headerSize = 8;  // 16 for a box with a 64-bit size
    bool isOpen = false;      // the header has no size: the box extends to the end of what surrounds it

    uint64_t end() const { return offset + size; }
    uint64_t content() const { return offset + headerSize; }
    bool IsFree() const { return type == "free" || type == "skip"; }
};

// Why a walk is over.
enum class WalkEnd {
    Complete,   // the boxes fill the range
    CutOff,     // what follows does not fit into the range, or the source ends in a header
    Malformed,  // a box smaller than its header
    TooMany,    // more boxes than any recording has
};

// The boxes between two positions of a source, one after the other. The source must outlive the walk.
class BoxWalk {
  public:
    // A file of nothing but headers must not exhaust memory or time.
    static constexpr int kMaxBoxes = 200000;

    BoxWalk(ByteSource& source, uint64_t from, uint64_t to) : source_(source), position_(from), to_(to) {}

    // Moves to the next box; false at the end of the walk.
    bool Next();

    // The current box.
    const Box& box() const { return box_; }

    // Where the next box would begin, and how many bytes of the range follow.
    uint64_t position() const { return position_; }
    uint64_t left() const { return to_ - position_; }

    // Why Next has returned false.
    WalkEnd end() const { return end_; }

  private:
    bool Stop(WalkEnd end) {
        end_ = end;
        return false;
    }

    ByteSource& source_;
    uint64_t position_;
    const uint64_t to_;
    int count_ = 0;
    Box box_;
    WalkEnd end_ = WalkEnd::Complete;
};

// The header of a box whose size, including the header, fits into 32 bits.
std::string BoxHeader(uint64_t size, std::string_view type);

}  // namespace media
