// The building blocks of media files made in code: big-endian numbers, PNG chunks and MP4 boxes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace samples {

std::string U16(uint16_t value);
std::string U32(uint32_t value);
std::string U64(uint64_t value);

// Length, type, data and CRC. https://www.w3.org/TR/png/#5Chunk-layout
std::string PngChunk(std::string_view type, std::string_view data);

// A box with a 32-bit size. ISO/IEC 14496-12, 4.2.
std::string Mp4Box(std::string_view type, std::string_view payload);

}  // namespace samples
