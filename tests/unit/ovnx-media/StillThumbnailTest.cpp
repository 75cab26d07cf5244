#include <cstdio>
#include <limits>
#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <zlib.h>

#include "OvnxMedia.h"
#include "sample-captures/MediaBytes.h"
#include "sample-media/StillFiles.h"

namespace {

using namespace stillfiles;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File FileOf(const std::string& bytes) {
    File file(std::tmpfile(), std::fclose);
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::fflush(file.get());
    return file;
}

struct Thumbnail {
    int32_t status = 0;
    std::string message;
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> rgba;

    std::vector<int> PixelAt(uint32_t x, uint32_t y) const {
        const auto at = rgba.begin() + static_cast<std::ptrdiff_t>((size_t{y} * width + x) * 4);
        return {at, at + 4};
    }
};

Thumbnail Make(const std::string& bytes, uint32_t width = 320, uint32_t height = 180) {
    const File file = FileOf(bytes);
    char message[200] = "";
    const OvnxMediaRequest request{width, height, nullptr, nullptr, message, sizeof(message)};
    OvnxMediaPicture picture{};
    Thumbnail result;
    result.status = OvnxMediaStillThumbnail(fileno(file.get()), &request, &picture);
    result.message = message;
    if (result.status != OVNX_MEDIA_OK) return result;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, picture.bytes, picture.size));
    image.format = PNG_FORMAT_RGBA;
    result.width = image.width;
    result.height = image.height;
    result.rgba.resize(PNG_IMAGE_SIZE(image));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, result.rgba.data(), 0, nullptr));
    EXPECT_TRUE(picture.width == result.width && picture.height == result.height);
    OvnxMediaRelease(&picture);
    EXPECT_EQ(picture.bytes, nullptr);
    return result;
}

using Pixel = std::vector<int>;

TEST(PngThumbnail, IsTheMeanOfWhatShows) {
    const struct {
        PngKind kind;
        std::array<uint16_t, 4> left, right;
        Pixel mean;
    } cases[] = {{{PNG_COLOR_TYPE_GRAY, 16}, {0x4040}, {0x8080}, {96, 96, 96, 255}},
                 {{PNG_COLOR_TYPE_RGB_ALPHA}, {200, 0, 0, 0}, {0, 0, 99, 200}, {0, 0, 99, 100}},
                 {{PNG_COLOR_TYPE_PALETTE, 2}, {0}, {1}, {0, 0, 255, 128}}};
    for (const auto& [kind, left, right, mean] : cases) {
        const auto halves = [&left = left, &right = right](uint32_t x, uint32_t) {
            return x < 5 ? left : right;
        };
        const Thumbnail one = Make(Png(10, 20, kind, halves), 1, 2);
        EXPECT_EQ(one.message, "");
        EXPECT_EQ(one.PixelAt(0, 1), mean) << kind.colours;
    }
}

TEST(PngThumbnail, IsTheSameOfAnInterlacedFile) {
    for (const uint32_t side : {1U, 6U, 61U}) {
        const auto make = [side](bool interlaced) {
            std::mt19937 random(1);
            const auto noise = [&random](uint32_t, uint32_t) {
                return std::array<uint16_t, 4>{static_cast<uint16_t>(random() & 255), 7, 8};
            };
            return Make(Png(side, side + 2, {PNG_COLOR_TYPE_RGB, 8, interlaced}, noise), 17, 17).rgba;
        };
        EXPECT_EQ(make(false), make(true)) << side;
        EXPECT_FALSE(make(true).empty());
    }
}

TEST(JpegThumbnail, HasEverySizeAndTheColoursOfItsInks) {
    const auto halves = [](int x, int) { return x < 320 ? Rgb{200, 100, 50} : Rgb{100, 50, 200}; };
    for (const int format : {TJPF_RGB, TJPF_CMYK}) {
        const std::string file = Jpeg(640, 320, TJSAMP_444, 0, halves, format);
        for (const uint32_t width : {640U, 333U, 50U, 2U}) {
            const Thumbnail one = Make(file, width, 1000);
            ASSERT_EQ(one.message, "");
            EXPECT_EQ(std::pair(one.width, one.height), std::pair(width, (width + 1) / 2));
            for (size_t c = 0; c < 3; ++c) {
                EXPECT_NEAR(one.PixelAt(0, 0)[c], halves(0, 0)[c], 4) << width;
                EXPECT_NEAR(one.PixelAt(width - 1, 0)[c], halves(639, 0)[c], 4) << width;
            }
        }
    }
}

TEST(ExrThumbnail, FitsLightToAScreen) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr float kMost = std::numeric_limits<float>::infinity();
    // 0.5 is kept, which sRGB codes as 188; 1 becomes 0.75; the mean of 0 and 1 is 0.5.
    const struct {
        float even, odd;
        int expected;
    } cases[] = {{0.5F, 0.5F, 188}, {1, 1, 225},         {0, 1, 188}, {-5, 1, 188},
                 {kNone, 1, 188},   {kMost, kMost, 255}, {0, 0, 0}};
    for (const auto& [even, odd, expected] : cases) {
        const auto stripes = [&even = even, &odd = odd](size_t, int x, int) {
            return x % 2 == 0 ? even : odd;
        };
        EXPECT_EQ(Make(Exr(8, 4, {}, stripes), 4, 4).PixelAt(3, 1),
                  (Pixel{expected, expected, expected, 255}));
    }
}

TEST(ExrThumbnail, IsOfTheFirstPartWithColours) {
    const auto colours = [](size_t channel, int, int y) {
        return y < 50 ? 0.0F : 0.5F * static_cast<float>(channel == 1);
    };
    const Pixel green{0, 188, 0, 255};
    // Channels are written in the order given and read by their names.
    const std::vector<std::string> rgba{"R", "G", "B", "A"};
    for (const ExrKind& kind : {ExrKind{Imf::DWAB_COMPRESSION, false, 3, rgba, 0, {-7, 9}},
                                {Imf::ZIP_COMPRESSION, true, 2, rgba, 0, {100, -50}}}) {
        const Thumbnail one = Make(Exr(200, 100, kind, colours), 20, 20);
        ASSERT_EQ(one.message, "");
        EXPECT_EQ(one.PixelAt(19, 0), (Pixel{0, 0, 0, 255}));
        EXPECT_NEAR(one.PixelAt(19, 9)[1], 188, 1);
        EXPECT_EQ(one.PixelAt(19, 9)[0], 0);
    }
    const auto grey = [](size_t, int, int) { return 0.5F; };
    EXPECT_EQ(Make(Exr(9, 9, {Imf::ZIP_COMPRESSION, false, 1, {"Y", "Z"}}, grey)).PixelAt(8, 8),
              (Pixel{188, 188, 188, 255}));
    EXPECT_EQ(Make(Exr(9, 9, {Imf::ZIP_COMPRESSION, false, 1, {"Z"}}, grey)).status, OVNX_MEDIA_DAMAGED);
}

TEST(ExrThumbnail, TakesAPreviewThatIsLargeEnough) {
    const auto white = [](size_t, int, int) { return 100.0F; };
    ExrKind kind;
    kind.previewWidth = 40;
    EXPECT_EQ(Make(Exr(200, 100, kind, white), 40, 40).PixelAt(7, 7), (Pixel{0, 200, 0, 255}));
    EXPECT_GT(Make(Exr(200, 100, kind, white), 41, 41).PixelAt(7, 7)[0], 250);
    EXPECT_GT(Make(Exr(100, 100, kind, white), 20, 20).PixelAt(7, 7)[0], 250) << "of another aspect";
}

// The number at `at`, of the byte order of the format, replaced.
std::string With(std::string file, size_t at, const std::string& bytes) {
    return file.replace(at, bytes.size(), bytes);
}

std::string WithIhdr(uint32_t width, uint32_t height) {
    std::string file = Png(1, 1, {}, [](uint32_t, uint32_t) { return std::array<uint16_t, 4>{}; });
    file = With(With(file, 16, samples::U32(width)), 20, samples::U32(height));
    const auto sum = static_cast<uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(&file[12]), 17));
    return With(file, 29, samples::U32(sum));
}

// Big-endian, with one entry of the orientation after `before`.
std::string Exif(uint16_t value, uint16_t entries = 1, const std::string& before = "", uint16_t type = 3,
                 uint32_t count = 1) {
    return std::string("MM\0*", 4) + samples::U32(8) + samples::U16(entries) + before + samples::U16(0x0112) +
           samples::U16(type) + samples::U32(count) + samples::U16(value) + samples::U16(0);
}

std::string WithSegment(const std::string& jpeg, const std::string& exif) {
    const std::string data = std::string("Exif\0\0", 6) + exif;
    return std::string(jpeg).insert(2, "\xFF\xE1" + samples::U16(uint16_t(data.size() + 2)) + data);
}

// Red grows to the right as stored, green downwards.
std::vector<std::string> WithExif(const std::string& exif) {
    const auto quarters = [](uint32_t x, uint32_t y) {
        return Rgb{uint8_t(x < 32 ? 0 : 250), uint8_t(y < 16 ? 0 : 250)};
    };
    const auto wide = [&](uint32_t x, uint32_t y) {
        return std::array<uint16_t, 4>{quarters(x, y)[0], quarters(x, y)[1]};
    };
    std::vector<std::string> files{WithSegment(Jpeg(64, 32, TJSAMP_444, 0, quarters), exif)};
    for (const bool interlaced : {false, true})
        files.push_back(Png(64, 32, {PNG_COLOR_TYPE_RGB, 8, interlaced}, wide)
                            .insert(33, samples::PngChunk("eXIf", exif)));
    return files;
}

// Where each corner, clockwise from the upper left one, is stored: "abcd" in this order.
std::string CornersOf(const Thumbnail& one) {
    std::string corners = one.message;
    const uint32_t right = one.width - 1;
    const uint32_t lower = one.height - 1;
    for (const auto& [x, y] : {std::pair(0U, 0U), {right, 0U}, {right, lower}, {0U, lower}}) {
        const Pixel pixel = one.PixelAt(x, y);
        corners += pixel[1] > 125 ? (pixel[0] > 125 ? 'c' : 'd') : (pixel[0] > 125 ? 'b' : 'a');
    }
    return corners;
}

TEST(StillThumbnail, IsUprightAsExifSaysAndFitsTheBoxThen) {
    const char* const corners[] = {"abcd", "badc", "cdab", "dcba", "adcb", "dabc", "cbad", "bcda"};
    const auto expect = [&](const std::string& exif, size_t value) {
        for (const std::string& file : WithExif(exif)) {
            const Thumbnail one = Make(file, 24, 20);
            ASSERT_EQ(one.message, "");
            EXPECT_EQ(CornersOf(one), corners[value - 1]) << value;
            EXPECT_EQ(std::pair(one.width, one.height),
                      value < 5 ? std::pair(24U, 12U) : std::pair(10U, 20U));
        }
    };
    for (uint16_t value = 1; value <= 8; ++value)
        expect(Exif(value), value);
    const std::string other(12, '\xFE');
    expect(Exif(6, 2, other), 6);
    const std::string right = Exif(6);
    for (const std::string& none :
         {std::string(), Exif(0), Exif(9), Exif(6, 1, "", 4), Exif(6, 1, "", 3, 2), Exif(6, 1, other),
          right.substr(0, 18), With(right, 4, "\xFF\xFF\xFF\xFF"), With(right, 0, "MI")})
        expect(none, 1);
    // The first data count.
    EXPECT_EQ(CornersOf(Make(WithSegment(WithExif(Exif(3))[0], right))), corners[5]);
}

TEST(StillThumbnail, RefusesWhatBreaksALimit) {
    const auto grey = [](int, int) { return Rgb{9, 9, 9}; };
    const auto dark = [](size_t, int, int) { return 0.0F; };
    const std::string baseline = Jpeg(8, 8, TJSAMP_444, 0, grey);
    const std::string progressive = Jpeg(64, 64, TJSAMP_444, TJFLAG_PROGRESSIVE, grey);
    const auto frame = [](const std::string& file, const char* marker) { return file.find(marker) + 5; };
    const std::string exr = Exr(8, 8, {}, dark);
    const size_t window = exr.find("dataWindow") + 11 + 6 + 4;
    const size_t chunks = exr.find("type") + 5 + 7;
    const size_t centre = exr.find("screenWindowCenter") + 19 + 4;
    const struct {
        const char* what;
        std::string file;
        int32_t status;
    } cases[] = {
        {"PNG side", WithIhdr(100000, 100000), OVNX_MEDIA_OVER_LIMIT},
        {"PNG row", WithIhdr(67108864, 1), OVNX_MEDIA_OVER_LIMIT},
        {"PNG empty", WithIhdr(0, 1), OVNX_MEDIA_DAMAGED},
        {"JPEG side", With(baseline, frame(baseline, "\xFF\xC0"), "\xFF\xFF\xFF\xFF"), OVNX_MEDIA_OVER_LIMIT},
        {"JPEG memory", With(progressive, frame(progressive, "\xFF\xC2"), "\x1F\xFF\x1F\xFF"),
         OVNX_MEDIA_OVER_LIMIT},
        {"JPEG scans", WithScansRepeated(progressive, 5000), OVNX_MEDIA_OVER_LIMIT},
        {"EXR side", With(exr, window + 8, "\xFF\xFF\xFF\x1F\xFF\xFF\xFF\x1F"), OVNX_MEDIA_OVER_LIMIT},
        {"EXR blocks", With(exr, window + 12, "\xFF\xFF\x0F"), OVNX_MEDIA_DAMAGED},
        {"EXR attribute", With(exr, chunks, "\xFF\xFF\xFF\x7F"), OVNX_MEDIA_DAMAGED},
        {"EXR attribute of another size", With(exr, centre, std::string(1, '\0')), OVNX_MEDIA_DAMAGED},
        {"nothing", "", OVNX_MEDIA_UNKNOWN_FORMAT},
        {"text", "a text of no format", OVNX_MEDIA_UNKNOWN_FORMAT}};
    for (const auto& [what, file, status] : cases) {
        const Thumbnail none = Make(file);
        EXPECT_EQ(none.status, status) << what << ": " << none.message;
        EXPECT_NE(none.message, "") << what;
    }
    EXPECT_EQ(Make(WithScansRepeated(progressive, 20)).status, OVNX_MEDIA_OK);
}

// A picture for each of the readers' ways through a file.
std::vector<std::string> OneOfEach() {
    const auto dot = [](uint32_t, uint32_t) { return std::array<uint16_t, 4>{}; };
    const auto colour = [](int, int) { return Rgb{9, 9, 9}; };
    const auto dark = [](size_t, int, int) { return 0.0F; };
    return {Png(19, 13, {}, dot),
            Png(19, 13, {PNG_COLOR_TYPE_RGB, 8, true}, dot),
            Jpeg(33, 17, TJSAMP_420, 0, colour),
            Jpeg(33, 17, TJSAMP_444, TJFLAG_PROGRESSIVE, colour),
            Exr(20, 10, {}, dark),
            Exr(20, 10, {Imf::PIZ_COMPRESSION, true}, dark)};
}

TEST(StillThumbnail, StopsOnDemand) {
    const auto stop = [](void* context) { return ++*static_cast<int*>(context) > 1 ? 1 : 0; };
    for (const std::string& file : OneOfEach()) {
        int asked = 0;
        const File source = FileOf(file);
        OvnxMediaPicture picture{};
        const OvnxMediaRequest request{9, 9, stop, &asked, nullptr, 0};
        EXPECT_EQ(OvnxMediaStillThumbnail(fileno(source.get()), &request, &picture), OVNX_MEDIA_STOPPED);
        EXPECT_EQ(picture.bytes, nullptr);
    }
}

TEST(Probe, GoesByTheFirstBytes) {
    const auto probe = [](const std::string& bytes) { return OvnxMediaProbe(fileno(FileOf(bytes).get())); };
    for (const std::string& file : OneOfEach())
        EXPECT_EQ(probe(file.substr(0, 8)), OVNX_MEDIA_KIND_STILL);
    for (const char* video : {"1234ftypisom", "1234mdat", "\x1A\x45\xDF\xA3"})
        EXPECT_EQ(probe(video), OVNX_MEDIA_KIND_VIDEO) << video;
    for (const char* other : {"", "\x89PN", "ftypisom", "GIF89a"})
        EXPECT_EQ(probe(other), OVNX_MEDIA_KIND_UNKNOWN) << other;
    EXPECT_EQ(OvnxMediaProbe(-1), OVNX_MEDIA_UNREADABLE);
    const File folder(std::fopen("/", "r"), std::fclose);
    ASSERT_TRUE(folder);
    EXPECT_EQ(OvnxMediaProbe(fileno(folder.get())), OVNX_MEDIA_UNREADABLE);
}

}  // namespace
