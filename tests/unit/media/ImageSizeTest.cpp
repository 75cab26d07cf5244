#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/media/ImageSize.h"
#include "tests/support/CaptureBytes.h"
#include "tests/support/TempFolder.h"

namespace {

// Blanks are passed over.
std::string Hex(std::string digits) {
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    std::string bytes;
    for (size_t at = 0; at < digits.size(); at += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    return bytes;
}

std::string Attribute(const std::string& name, const std::string& type, const std::string& value) {
    const std::string size = samples::U32(static_cast<uint32_t>(value.size()));
    return name + '\0' + type + '\0' + std::string(size.rbegin(), size.rend()) + value;
}

// "width height", or nothing.
std::string SizeOf(const std::string& bytes) {
    const std::vector<char> exact(bytes.begin(), bytes.end());
    media::MemorySource source({exact.data(), exact.size()});
    media::ImageSize size;
    if (!media::ReadImageSize(source, size)) return "";
    return std::to_string(size.width) + " " + std::to_string(size.height);
}

const std::string kWebP = "52494646 63000000 57454250 ";
const std::string kBmp = "424d 000000000000 000000000000 ";
const std::string kPng = Hex("89504e470d0a1a0a 0000000d 49484452 7fffffff 00000001 0802000000 00000000");
// Up to the count of components, after a comment and a fill byte.
const std::string kJpeg = Hex("ffd8 fffe0006 ffc0ffd9 ff ffc0 0011 08 0438 0780 03");
const std::string kGif = Hex("474946383961 8002 e001 000000");
const std::string kWindowsBmp = Hex(kBmp + "10000000 2c010000 38ffffff 00000000");
const std::string kOldBmp = Hex(kBmp + "0c000000 2c01 ffff 00000000");
const std::string kCanvas = Hex(kWebP + "56503858 0a000000 00000000 ffffff 020000");
const std::string kLossy = Hex(kWebP + "56503820 0a000000 000000 9d012a 8042 ffff");
const std::string kLossless = Hex(kWebP + "5650384c 05000000 2f ff7f0010");
// The data window is larger: what a renderer has drawn beyond the edges.
const std::string kExr = Hex("762f3101 02000000") +
                         Attribute("dataWindow", "box2i", Hex("00000000 00000000 63000000 63000000")) +
                         Attribute("preview", "preview", std::string(3000, 'x')) +
                         Attribute("displayWindow", "box2i", Hex("fbffffff 00000000 05000000 14000000"));

TEST(ImageSize, IsReadFromEachHeaderAndNotFromAPartOfIt) {
    const std::pair<const char*, std::string> cases[] = {
        {"2147483647 1", kPng},   {"1920 1080", kJpeg},   {"640 480", kGif},
        {"300 200", kWindowsBmp}, {"300 65535", kOldBmp}, {"16777216 3", kCanvas},
        {"640 16383", kLossy},    {"16384 2", kLossless}, {"11 21", kExr}};
    for (const auto& [size, header] : cases) {
        EXPECT_EQ(SizeOf(header), size);
        EXPECT_EQ(SizeOf(header + "more"), size);
        for (size_t end = 0; end < header.size(); ++end)
            EXPECT_EQ(SizeOf(header.substr(0, end)), "") << size << " " << end;
    }
    unsigned int width = 0, height = 0;
    const TempFolder folder;
    const std::string oldGif = std::string(kGif).replace(4, 1, "7");
    EXPECT_TRUE(media::GetImageFileDimensions(folder.Write("a", oldGif), width, height) && width == 640);
}

TEST(ImageSize, RefusesEmptyPicturesAndDamagedHeaders) {
    const size_t box = kExr.size() - 16;  // of the display window
    const struct {
        std::string header;
        size_t at;
        const char* bytes;
    } cases[] = {
        {kPng, 16, "00000000"}, {kPng, 16, "80000000"},      {kPng, 11, "0c"},
        {kGif, 4, "38"},        {kWindowsBmp, 14, "0f"},     {kLossy, 20, "01"},
        {kLossless, 24, "30"},  {kExr, box + 8, "ffffff7f"},  // wider than an integer holds
        {kExr, 8, "00"},                                      // the end of the header
        {kExr, box - 6, "66"},                                // a type of another name
    };
    for (const auto& [header, at, bytes] : cases)
        EXPECT_EQ(SizeOf(std::string(header).replace(at, Hex(bytes).size(), Hex(bytes))), "") << bytes;
}

}  // namespace
