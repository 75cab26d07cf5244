#include "plugin-modules/Gallery/src/media/PngChunks.h"

#include <cstdint>

#include "plugin-modules/Gallery/src/media/FolderCrc.h"

namespace media {
namespace {

void AppendU32(std::string& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
}

}  // namespace

void AppendPngChunk(std::string& bytes, std::string_view type, std::string_view data) {
    AppendU32(bytes, static_cast<uint32_t>(data.size()));
    const size_t summed = bytes.size();
    bytes.append(type).append(data);
    const std::string_view whole(bytes);
    AppendU32(bytes, CRC(whole.begin() + static_cast<long>(summed), whole.end()));
}

void AppendPngText(std::string& bytes, std::string_view keyword, std::string_view value) {
    AppendPngChunk(bytes, "tEXt", std::string(keyword) + '\0' + std::string(value));
}

}  // namespace media
