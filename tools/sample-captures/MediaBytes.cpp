#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

std::string BigEndian(uint64_t value, int bytes) {
    std::string out;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8)
        out += static_cast<char>(value >> shift);
    return out;
}

uint32_t Crc32(std::string_view bytes) {
    uint32_t crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) ? 0xEDB88320u : 0);
    }
    return ~crc;
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
    return U32(static_cast<uint32_t>(data.size())) + body + U32(Crc32(body));
}

std::string Mp4Box(std::string_view type, std::string_view payload) {
    return U32(static_cast<uint32_t>(payload.size() + 8)) + std::string(type) + std::string(payload);
}

}  // namespace samples
