// The Range field of a request, for one range of bytes (RFC 9110, 14.2).
#pragma once

#include <cstdint>
#include <string_view>

namespace host::page {

struct ByteRange {
    enum class Kind {
        kWhole,          // no range, several, or one that is malformed: answered as if there were none
        kPart,           // answered with 206
        kUnsatisfiable,  // answered with 416
    };
    Kind kind = Kind::kWhole;
    uint64_t first = 0;
    uint64_t length = 0;
};

// `field` is empty where there is none; `size` is that of the file.
ByteRange ReadRange(std::string_view field, uint64_t size);

}  // namespace host::page
