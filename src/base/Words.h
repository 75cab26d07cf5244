// Texts and blocks of bytes, eight or sixteen bytes at a time, for little-endian machines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace KXP {

using Word = uint64_t;
constexpr Word kEachByte = 0x0101010101010101;

inline Word LoadWord(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Marks the zero bytes of a word by their high bits, and perhaps some bytes beside them.
constexpr Word ZeroBytes(Word word) {
    return (word - kEachByte) & ~word & (kEachByte * 0x80);
}

// Marks the bytes that are one of these in the same way.
template <unsigned char... kBytes>
constexpr Word BytesOf(Word word) {
    return (ZeroBytes(word ^ (kEachByte * kBytes)) | ...);
}

// Sixteen bytes, which processors compare at once.
using WideWord = uint8_t __attribute__((vector_size(16)));

inline WideWord LoadWideWord(const char* bytes) {
    WideWord word{};
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Not 0 where the byte is one of these.
template <unsigned char... kBytes>
auto EqualBytes(WideWord word) {
    return ((word == kBytes) | ...);
}

// Both halves of what EqualBytes returns, with a mark as ZeroBytes makes it, and no other.
template <typename Equal>
std::array<Word, 2> MarksOf(Equal equal) {
    std::array<Word, 2> marks{};
    static_assert(sizeof equal == sizeof marks);
    std::memcpy(marks.data(), &equal, sizeof marks);
    for (Word& half : marks)
        half &= kEachByte * 0x80;
    return marks;
}

// The index of the first byte that is marked; some byte must be.
inline size_t FirstMark(Word marks) {
    static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);
    return static_cast<size_t>(__builtin_ctzll(marks)) / 8;
}

}  // namespace KXP
