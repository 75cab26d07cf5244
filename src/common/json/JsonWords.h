// JSON strings eight bytes at a time.
#pragma once

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
inline Word ZeroBytes(Word word) {
    return (word - kEachByte) & ~word & (kEachByte * 0x80);
}

// Marks the quotes and backslashes in the same way.
inline Word QuoteBytes(Word word) {
    return ZeroBytes(word ^ (kEachByte * '"')) | ZeroBytes(word ^ (kEachByte * '\\'));
}

}  // namespace KXP
