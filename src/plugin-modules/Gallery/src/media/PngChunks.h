// Chunks of a PNG as a writer of metadata makes them. https://www.w3.org/TR/png/#5Chunk-layout
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace media {

inline constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n";
// Of a chunk: its length, its type, and after its data the check sum.
inline constexpr size_t kPngChunkFrame = 12;

void AppendPngChunk(std::string& bytes, std::string_view type, std::string_view data);

// A chunk tEXt.
void AppendPngText(std::string& bytes, std::string_view keyword, std::string_view value);

}  // namespace media
