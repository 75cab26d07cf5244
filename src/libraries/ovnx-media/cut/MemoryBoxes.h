// Boxes of an MP4 file that lie in memory: listed, found, edited and appended.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {

// Throws the Failure of a file whose boxes contradict each other.
[[noreturn]] void ThrowDamaged();

// Refers to the memory that was listed.
struct BoxView {
    std::string type;
    std::string_view whole;
    std::string_view content;

    media::ByteView view() const { return media::ByteView(content); }
};

// The boxes of `bytes` in a row. Up to seven bytes may follow the last one; some user data end in a zero.
// Throws Failure when a box extends beyond the end.
std::vector<BoxView> BoxesOf(std::string_view bytes);

// The content of the first box at a path of types. Empty when there is none.
std::string_view ContentAt(std::string_view bytes, std::initializer_list<std::string_view> path);

// Reassembles `bytes`, in which each box is replaced by what `edit` appends for it. What follows the last box
// is kept.
std::string EditedBoxes(std::string_view bytes,
                        const std::function<void(const BoxView& box, std::string& out)>& edit);

// Appends a box, with a 64-bit size where it needs one.
void AppendBox(std::string& out, std::string_view type, std::string_view content);

// Big-endian numbers of `size` bytes.
void AppendNumber(std::string& out, size_t size, uint64_t value);
// Throws Failure when the number does not lie within `bytes`, or is too large for its size.
void PutNumber(std::string& bytes, size_t at, size_t size, uint64_t value);

// Whether a header or a list has times of 64 bits.
bool HasLongTimes(std::string_view content);
// Puts a time into a header, which has it elsewhere if its times are long.
void PutTime(std::string& content, size_t at, size_t atIfLong, int64_t time);

}  // namespace ovnxmedia
