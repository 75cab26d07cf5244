#include "sample-captures/MediaBytes.h"

#include <zlib.h>

namespace samples {
namespace {

std::string BigEndian(uint64_t value, int bytes) {
    std::string out;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift);
    return out;
}

}  // namespace

std::string U16(uint16_t value) {
    return BigEndian(value, 2);
}

std::string U32(uint32_t value) {
    return BigEndian(value, 4);
}

std::string U64(uint64_t value) {
    return BigEndian(value, 8);
}

std::string PngChunk(std::string_view type, std::string_view data) {
    const std::string body = std::string(type) + std::string(data);
    const uLong sum = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
    return U32(static_cast<uint32_t>(data.size())) + body + U32(static_cast<uint32_t>(sum));
}

std::string Mp4Box(std::string_view type, std::string_view payload) {
    return U32(static_cast<uint32_t>(payload.size() + 8)) + std::string(type) + std::string(payload);
}

}  // namespace samples
