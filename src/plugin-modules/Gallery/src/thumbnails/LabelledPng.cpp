#include "plugin-modules/Gallery/src/thumbnails/LabelledPng.h"

#include "plugin-modules/Gallery/src/media/FolderCrc.h"

namespace {

// The signature of a PNG, and the same with its header, the chunk IHDR.
constexpr size_t kSignatureBytes = 8;
constexpr size_t kHeaderBytes = kSignatureBytes + 25;
// Of a chunk: its length, its type, and after its data the check sum.
constexpr size_t kLengthBytes = 4;
constexpr size_t kTypeBytes = 4;
constexpr size_t kFrameBytes = kLengthBytes + kTypeBytes + 4;
constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";

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

void AppendU32(std::string& text, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift & 0xFF);
}

void AppendChunk(std::string& text, std::string_view type, const std::string& data) {
    AppendU32(text, static_cast<uint32_t>(data.size()));
    const size_t summed = text.size();
    text.append(type).append(data);
    AppendU32(text, CrcOf(std::string_view(text).substr(summed)));
}

void AppendText(std::string& text, std::string_view keyword, const std::string& value) {
    AppendChunk(text, "tEXt", std::string(keyword) + '\0' + value);
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
    if (bytes.substr(0, kSignatureBytes) != kSignature) return false;
    size_t length = 0;
    for (size_t at = kSignatureBytes; CheckChunk(bytes, at, length); at += kFrameBytes + length) {
        if (bytes.substr(at + kLengthBytes, kTypeBytes) == "IEND") return at + kFrameBytes == bytes.size();
    }
    return false;
}

}  // namespace

std::string LabelOf(const ThumbnailCache::Key& key) {
    std::string label;
    AppendChunk(label, kPathType, std::string(kPathStart) + key.path);
    AppendText(label, "Time", std::to_string(key.time));
    AppendText(label, "Size", std::to_string(key.size));
    AppendText(label, "Box", std::to_string(key.width) + "x" + std::to_string(key.height));
    AppendText(label, "Software", THUMBNAIL_SOFTWARE);
    return label;
}

std::string DesktopLabelOf(const std::string& uri, int64_t seconds, uint64_t size) {
    std::string label;
    AppendText(label, "Thumb::URI", uri);
    AppendText(label, "Thumb::MTime", std::to_string(seconds));
    AppendText(label, "Thumb::Size", std::to_string(size));
    AppendText(label, "Software", THUMBNAIL_SOFTWARE);
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
