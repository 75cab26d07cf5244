// Bytes read the plain way, for fuzz targets that compare a reader with a second, simple form of it: all
// bytes at hand, positions of 64 bits, no windows and no state.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace plain {

// The bytes at a position, which may lie anywhere; fewer at the end.
inline std::string_view At(std::string_view all, uint64_t position, uint64_t count) {
    return position < all.size() ? all.substr(position, count) : std::string_view();
}

inline uint64_t Big(std::string_view bytes) {
    uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

inline bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

inline void Demand(bool holds) {
    if (!holds) std::abort();
}

}  // namespace plain
