#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/ImageSize.h"
#include "tests/support/CaptureBytes.h"

namespace {

using samples::U16;
using samples::U32;

std::string Little(std::string bigEndian) {
    return {bigEndian.rbegin(), bigEndian.rend()};
}

std::string Half(uint16_t value) {
    return Little(U16(value));
}

std::string Word(uint32_t value) {
    return Little(U32(value));
}

std::string Png(uint32_t width, uint32_t height) {
    return "\x89PNG\r\n\x1A\n" +
           samples::PngChunk("IHDR", U32(width) + U32(height) + std::string("\x08\2\0\0\0", 5));
}

// Up to the count of components, after a comment and a fill byte.
std::string Jpeg(uint16_t height, uint16_t width) {
    return "\xFF\xD8\xFF\xFE" + U16(6) + "\xFF\xC0\xFF\xD9\xFF" +
           captures::FrameHeader(height, width).substr(0, 10);
}

std::string Bmp(const std::string& info) {
    return "BM" + std::string(12, '\0') + Word(static_cast<uint32_t>(info.size() + 4)) + info;
}

std::string BmpInfo(uint32_t width, uint32_t height) {
    return Bmp(Word(width) + Word(height) + std::string(28, '\0')).substr(0, 30);
}

std::string WebP(const std::string& type, const std::string& data) {
    return "RIFF" + Word(99) + "WEBP" + type + Word(static_cast<uint32_t>(data.size())) + data;
}

std::string Canvas(uint32_t width, uint32_t height) {
    return WebP("VP8X", Word(0) + Word(width - 1).substr(0, 3) + Word(height - 1).substr(0, 3));
}

std::string Lossy(uint16_t width, uint16_t height) {
    return WebP("VP8 ", std::string("\0\0\0\x9D\x01\x2A", 6) + Half(width) + Half(height));
}

std::string Lossless(uint32_t bits) {
    return WebP("VP8L", "\x2F" + Word(bits));
}

std::string Attribute(const std::string& name, const std::string& type, const std::string& value) {
    return name + '\0' + type + '\0' + Word(static_cast<uint32_t>(value.size())) + value;
}

// The data window is larger: what a renderer has drawn beyond the edges.
std::string Exr(uint32_t left, uint32_t top, uint32_t right, uint32_t bottom) {
    return "\x76\x2F\x31\x01" + Word(2) +
           Attribute("dataWindow", "box2i", Word(0) + Word(0) + Word(99) + Word(99)) +
           Attribute("preview", "preview", std::string(3000, 'x')) +
           Attribute("displayWindow", "box2i", Word(left) + Word(top) + Word(right) + Word(bottom));
}

// "width height", or nothing.
std::string SizeOf(const std::string& bytes) {
    const std::vector<char> exact(bytes.begin(), bytes.end());
    media::MemorySource source({exact.data(), exact.size()});
    media::ImageSize size;
    if (!media::ReadImageSize(source, size)) return "";
    return std::to_string(size.width) + " " + std::to_string(size.height);
}

}  // namespace

TEST(ImageSize, IsToldByEachHeaderAndNotByAPartOfIt) {
    struct {
        const char* size;
        std::string header;
    } const cases[] = {
        {"2147483647 1", Png(0x7FFFFFFF, 1)},
        {"1920 1080", Jpeg(1080, 1920)},
        {"640 480", "GIF89a" + Half(640) + Half(480) + std::string(3, '\0')},
        {"300 200", BmpInfo(300, static_cast<uint32_t>(-200))},
        {"300 65535", Bmp(Half(300) + Half(65535) + std::string(4, '\0'))},
        {"16777216 3", Canvas(16777216, 3)},
        {"640 16383", Lossy(640 | 0x4000, 0xFFFF)},
        {"16384 2", Lossless(0x3FFF | 1 << 14 | 1 << 28)},
        {"11 21", Exr(static_cast<uint32_t>(-5), 0, 5, 20)},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        EXPECT_EQ(SizeOf(row.header), row.size);
        EXPECT_EQ(SizeOf(row.header + "more"), row.size);
        for (size_t size = 0; size < row.header.size(); ++size)
            EXPECT_EQ(SizeOf(row.header.substr(0, size)), "") << size;
    }
}

TEST(ImageSize, RefusesEmptyPicturesAndDamagedHeaders) {
    std::string damagedPng = Png(5, 5);
    damagedPng[11] = 12;
    std::string noKeyFrame = Lossy(5, 5);
    noKeyFrame[20] = 1;
    const std::string cases[] = {
        Png(0, 5),
        Png(0x80000000, 5),
        damagedPng,
        "GIF88a" + Half(5) + Half(5) + "xxx",
        BmpInfo(5, 5).replace(14, 1, "\x0F"),
        noKeyFrame,
        Lossless(1u << 29),
        Exr(0, 0, 0x7FFFFFFF, 5),
        "\x76\x2F\x31\x01" + Word(2) + std::string(1, '\0') + Exr(0, 0, 5, 5).substr(8),
        "\x76\x2F\x31\x01" + Word(2) + Attribute("displayWindow", "box2f", std::string(16, '\1')),
    };
    for (const std::string& bytes : cases)
        EXPECT_EQ(SizeOf(bytes), "") << "case " << &bytes - cases;
}
