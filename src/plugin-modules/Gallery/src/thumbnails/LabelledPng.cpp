#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"

#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/media/PngChunks.h"

namespace {

using media::AppendPngText;
using media::kPngSignature;

// The signature of a PNG with its header, the chunk IHDR.
constexpr size_t kHeaderBytes = kPngSignature.size() + 25;
constexpr size_t kLengthBytes = 4;
constexpr size_t kTypeBytes = 4;
constexpr size_t kFrameBytes = media::kPngChunkFrame;

// The keyword, then: not compressed, no method, no language, no translated keyword.
constexpr std::string_view kPathStart{"Path\0\0\0\0\0", 9};
constexpr std::string_view kPathType = "iTXt";

uint32_t CrcOf(std::string_view bytes) {
    return media::CRC(bytes.begin(), bytes.end());
}

uint32_t ReadU32(std::string_view bytes, size_t at) {
    uint32_t value = 0;
    for (const char byte : bytes.substr(at, 4))
        value = value << 8 | static_cast<uint8_t>(byte);
    return value;
}

// The length of the chunk's data; false when the chunk does not fit into the bytes or its sum is wrong.
bool CheckChunk(std::string_view bytes, size_t at, size_t& length) {
    if (bytes.size() - at < kFrameBytes) return false;
    length = ReadU32(bytes, at);
    if (length > bytes.size() - at - kFrameBytes) return false;
    const size_t summed = kTypeBytes + length;
    return CrcOf(bytes.substr(at + kLengthBytes, summed)) == ReadU32(bytes, at + kLengthBytes + summed);
}

// Whether chunks fill the file and the end chunk, without data, is the last of them.
bool IsWholePng(std::string_view bytes) {
    if (bytes.substr(0, kPngSignature.size()) != kPngSignature) return false;
    size_t length = 0;
    for (size_t at = kPngSignature.size(); CheckChunk(bytes, at, length); at += kFrameBytes + length) {
        if (bytes.substr(at + kLengthBytes, kTypeBytes) == "IEND") return at + kFrameBytes == bytes.size();
    }
    return false;
}

}  // namespace

std::string LabelOf(const ThumbnailCache::Key& key) {
    std::string label;
    media::AppendPngChunk(label, kPathType, std::string(kPathStart) + key.path);
    AppendPngText(label, "Time", std::to_string(key.time));
    AppendPngText(label, "Size", std::to_string(key.size));
    AppendPngText(label, "Box", std::to_string(key.width) + "x" + std::to_string(key.height));
    AppendPngText(label, "Software", THUMBNAIL_SOFTWARE);
    return label;
}

std::string DesktopLabelOf(const std::string& uri, int64_t seconds, uint64_t size) {
    std::string label;
    AppendPngText(label, "Thumb::URI", uri);
    AppendPngText(label, "Thumb::MTime", std::to_string(seconds));
    AppendPngText(label, "Thumb::Size", std::to_string(size));
    AppendPngText(label, "Software", THUMBNAIL_SOFTWARE);
    return label;
}

KXP::SlabString AddLabel(std::string_view png, std::string_view label) {
    if (png.size() < kHeaderBytes) return "";
    KXP::SlabString file;
    file.reserve(png.size() + label.size());
    return file.append(png.substr(0, kHeaderBytes)).append(label).append(png.substr(kHeaderBytes));
}

bool TakeLabel(KXP::SlabString& file, std::string_view label) {
    if (file.size() < kHeaderBytes || file.compare(kHeaderBytes, label.size(), label) != 0) return false;
    if (!IsWholePng(file)) return false;
    file.erase(kHeaderBytes, label.size());
    return true;
}

std::string_view LabelledPath(std::string_view start) {
    size_t length = 0;
    if (start.size() < kHeaderBytes || !CheckChunk(start, kHeaderBytes, length)) return {};
    const std::string_view data = start.substr(kHeaderBytes + kLengthBytes + kTypeBytes, length);
    const bool isPath = start.substr(kHeaderBytes + kLengthBytes, kTypeBytes) == kPathType &&
                        data.substr(0, kPathStart.size()) == kPathStart;
    return isPath ? data.substr(kPathStart.size()) : std::string_view{};
}
