#include <cstdio>
#include <memory>

#include <gtest/gtest.h>
#include <zlib.h>

#include "OvnxMedia.h"
#include "sample-captures/MediaBytes.h"
#include "sample-captures/PngImage.h"

namespace {

using samples::PngChunk;
using samples::PngTextChunk;

constexpr const char* kUri = "file:///home/a/b.png";

std::string Packed(const std::string& keyword, const std::string& text) {
    std::string packed(compressBound(text.size()), '\0');
    uLongf size = packed.size();
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(text.data()),
             text.size());
    return PngChunk("zTXt", keyword + std::string(2, '\0') + packed.substr(0, size));
}

// The status of the thumbnail of `kUri`, changed at -1 s and of 7 bytes, in a box of 60 x 60.
int32_t Scale(const std::string& bytes) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), std::fclose);
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::fflush(file.get());
    const OvnxMediaOrigin origin{kUri, -1, 7};
    const OvnxMediaRequest request{60, 60, nullptr, nullptr, nullptr, 0};
    OvnxMediaPicture picture{};
    const int32_t status = OvnxMediaSharedThumbnail(fileno(file.get()), &origin, &request, &picture);
    EXPECT_EQ(picture.width, status == OVNX_MEDIA_OK ? 60U : 0U);
    EXPECT_EQ(picture.height, picture.width / 2);
    OvnxMediaRelease(&picture);
    return status;
}

TEST(SharedThumbnail, IsOfThatFileAloneAndLargerThanTheBox) {
    const std::string uri = PngTextChunk("Thumb::URI", kUri);
    const std::string time = PngTextChunk("Thumb::MTime", "-1");
    const std::string iTxt = PngChunk("iTXt", std::string("Thumb::URI\0\0\0\0\0", 15) + kUri);
    const auto image = [](const std::vector<std::string>& texts, uint32_t width = 128, uint32_t height = 64) {
        return samples::PngImage(width, height, {{255, 0, 0}, {0, 0, 255}}, texts);
    };
    for (const std::string& fitting :
         {image({uri, time}), image({Packed("Thumb::URI", kUri), time, PngTextChunk("Thumb::Size", "7")}),
          image({time, iTxt, PngTextChunk("Software", "another")}), image({uri, uri, time}, 62, 31)})
        EXPECT_EQ(Scale(fitting), OVNX_MEDIA_OK);
    const std::string right = image({uri, time});
    for (const std::string& other :
         {std::string(), std::string("no PNG"), right.substr(0, 40), image({}), image({uri}), image({time}),
          image({uri, PngTextChunk("Thumb::MTime", "-1.5")}), image({uri, PngTextChunk("Thumb::MTime", "1")}),
          image({uri, time, PngTextChunk("Thumb::Size", "8")}), image({uri, time}, 60, 30),
          image({uri, time}, 1025, 64), image({uri, PngTextChunk("Thumb::URI", "file:///c"), time}),
          image({Packed("Thumb::URI", kUri + std::string(1 << 20, ' ')), time}),
          right + std::string(8 << 20, '\0')})
        EXPECT_EQ(Scale(other), OVNX_MEDIA_UNKNOWN_FORMAT) << other.size();
    EXPECT_EQ(Scale(right.substr(0, right.size() - 30)), OVNX_MEDIA_DAMAGED);
    char name[OVNX_MEDIA_SHARED_NAME_SIZE];
    EXPECT_EQ(OvnxMediaSharedName("file:///home/jens/photos/me.png", name), OVNX_MEDIA_OK);
    EXPECT_STREQ(name, "c6ee772d9e49320e97ec29a7eb5b1697.png");
}

}  // namespace
