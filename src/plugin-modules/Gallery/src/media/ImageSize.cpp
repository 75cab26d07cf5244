#include "plugin-modules/Gallery/src/media/ImageSize.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/FileSource.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"

namespace media {
namespace {

// Wide enough for every number that a header can hold, so that differences and negative sides show.
struct Sides {
    int64_t width;
    int64_t height;
};
using Found = std::optional<Sides>;

// The start of a source. A file of nothing but markers or attributes ends here, however large it is.
class HeadSource final : public ByteSource {
  public:
    explicit HeadSource(ByteSource& source) : source_(source) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        if (position >= kLimit) return 0;
        return source_.ReadAt(position, out,
                              static_cast<size_t>(std::min<uint64_t>(count, kLimit - position)));
    }

  private:
    static constexpr uint64_t kLimit = uint64_t{64} << 20;

    ByteSource& source_;
};

int64_t SignedLittle(ByteView bytes, uint64_t offset) {
    return static_cast<int32_t>(bytes.Little(offset, 4));
}

// https://www.w3.org/TR/png/#11IHDR
Found ReadPng(ByteCursor& cursor) {
    constexpr size_t kUpToCrc = 33;
    const ByteView head = cursor.Take(kUpToCrc);
    if (head.size() < kUpToCrc || head.U32(8) != 13 || !head.HasAt(12, "IHDR")) return {};
    return Sides{head.U32(16), head.U32(20)};
}

Found ReadJpeg(ByteCursor& cursor) {
    const std::optional<JpegFrame> frame = FindJpegFrame(cursor);
    if (!frame) return {};
    return Sides{frame->width, frame->height};
}

// https://www.w3.org/Graphics/GIF/spec-gif89a.txt
Found ReadGif(ByteCursor& cursor) {
    const ByteView head = cursor.Take(13);
    if (head.size() < 13 || (!head.HasAt(4, "7a") && !head.HasAt(4, "9a"))) return {};
    return Sides{head.Little(6, 2), head.Little(8, 2)};
}

// The oldest header has sides of 16 bits; in all others a negative height means that the top row comes first.
Found ReadBmp(ByteCursor& cursor) {
    constexpr size_t kFileHeader = 14;
    const ByteView head = cursor.Take(kFileHeader + 16);
    const uint32_t infoSize = head.Little(kFileHeader, 4);
    if (infoSize == 12 && head.size() >= kFileHeader + 12)
        return Sides{head.Little(18, 2), head.Little(20, 2)};
    if (infoSize < 16 || head.size() < kFileHeader + 16) return {};
    return Sides{SignedLittle(head, 18), std::abs(SignedLittle(head, 22))};
}

// https://www.rfc-editor.org/rfc/rfc9649#section-2
Found ReadWebP(ByteCursor& cursor) {
    const ByteView head = cursor.Take(30);
    if (!head.HasAt(8, "WEBP")) return {};
    if (head.HasAt(12, "VP8L") && head.HasAt(20, "\x2F") && head.size() >= 25) {
        const uint32_t bits = head.Little(21, 4);
        constexpr uint32_t kVersion = 0xE0000000;
        if (bits & kVersion) return {};
        return Sides{int64_t{bits & 0x3FFF} + 1, int64_t{bits >> 14 & 0x3FFF} + 1};
    }
    if (head.size() < 30) return {};
    if (head.HasAt(12, "VP8X"))
        return Sides{int64_t{head.Little(24, 3)} + 1, int64_t{head.Little(27, 3)} + 1};
    constexpr uint32_t kNotKeyFrame = 1;
    if (!head.HasAt(12, "VP8 ") || !head.HasAt(23, "\x9D\x01\x2A") || head.Little(20, 1) & kNotKeyFrame)
        return {};
    // The two upper bits of each are a hint for scaling.
    return Sides{head.Little(26, 2) & 0x3FFF, head.Little(28, 2) & 0x3FFF};
}

// An attribute of an OpenEXR header: name, type, size and value. The texts end with a NUL.
// https://openexr.com/en/latest/OpenEXRFileLayout.html#attribute-layout
struct ExrAttribute {
    std::string_view name;
    std::string_view type;
    uint64_t valueAt;  // from the start of the attribute
    uint32_t size;
};

std::optional<ExrAttribute> ParseExrAttribute(ByteView bytes) {
    const std::string_view text = bytes.text();
    const size_t nameEnd = text.find('\0');
    if (nameEnd == std::string_view::npos) return {};
    const size_t typeEnd = text.find('\0', nameEnd + 1);
    if (typeEnd == std::string_view::npos || text.size() - typeEnd < 5) return {};
    return ExrAttribute{text.substr(0, nameEnd), text.substr(nameEnd + 1, typeEnd - nameEnd - 1), typeEnd + 5,
                        bytes.Little(typeEnd + 1, 4)};
}

// The corners are both inside.
Found ReadBox(ByteView box) {
    if (box.size() < 16) return {};
    return Sides{SignedLittle(box, 8) - SignedLittle(box, 0) + 1,
                 SignedLittle(box, 12) - SignedLittle(box, 4) + 1};
}

Found ReadExr(ByteCursor& cursor) {
    constexpr size_t kMaxText = 256;  // with its NUL
    constexpr size_t kMaxAttributeHead = 2 * kMaxText + 4;
    uint64_t position = 8;  // after magic number and version
    for (;;) {
        cursor.MoveTo(position);
        const std::optional<ExrAttribute> attribute = ParseExrAttribute(cursor.Take(kMaxAttributeHead));
        // An empty name ends the header.
        if (!attribute || attribute->name.empty()) return {};
        position += attribute->valueAt;
        if (attribute->name == "displayWindow") {
            if (attribute->type != "box2i" || attribute->size != 16) return {};
            cursor.MoveTo(position);
            return ReadBox(cursor.Take(16));
        }
        position += attribute->size;
    }
}

struct Format {
    std::string_view magic;
    Found (*read)(ByteCursor&);
};

constexpr Format kFormats[] = {
    {"\x89PNG\r\n\x1A\n", ReadPng},
    {"\xFF\xD8", ReadJpeg},
    {"\x76\x2F\x31\x01", ReadExr},
    {"GIF8", ReadGif},
    {"RIFF", ReadWebP},
    {"BM", ReadBmp},
};

Found ReadSides(ByteCursor& cursor) {
    const std::string start = cursor.Take(8).str();
    cursor.Rewind();
    for (const Format& format : kFormats)
        if (ByteView(start).StartsWith(format.magic)) return format.read(cursor);
    return {};
}

bool IsSide(int64_t pixels) {
    return pixels > 0 && pixels <= INT32_MAX;
}

}  // namespace

bool ReadImageSize(ByteSource& source, ImageSize& size) {
    HeadSource head(source);
    ByteCursor cursor(head);
    const Found sides = ReadSides(cursor);
    if (!sides || !IsSide(sides->width) || !IsSide(sides->height)) return false;
    size = {static_cast<unsigned int>(sides->width), static_cast<unsigned int>(sides->height)};
    return true;
}

bool GetImageFileDimensions(const std::string& path, unsigned int& width, unsigned int& height) {
    KXP::ifstream file;
    if (!file.open(path)) return false;
    FileSource source(file);
    ImageSize size;
    if (!ReadImageSize(source, size)) return false;
    width = size.width;
    height = size.height;
    return true;
}

}  // namespace media
