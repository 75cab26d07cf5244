#include "sample-captures/JpegImage.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <turbojpeg.h>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

constexpr int kQuality = 75;
constexpr size_t kFirstSegments = 20;  // the start of the picture and the JFIF segment

struct Free {
    void operator()(unsigned char* bytes) const { tjFree(bytes); }
};
struct Destroy {
    void operator()(void* encoder) const { tjDestroy(encoder); }
};

// Row by row, for a sanitizer makes a call for each pixel a matter of seconds.
std::vector<Rgb> Pixels(uint32_t width, uint32_t height, const Gradient& colours) {
    std::vector<Rgb> pixels;
    pixels.reserve(size_t{width} * height);
    for (uint32_t row = 0; row < height; ++row)
        pixels.insert(pixels.end(), width, ColourAt(colours, row, height));
    return pixels;
}

std::string Encoded(const Picture& picture) {
    static_assert(sizeof(Rgb) == 3, "as the encoder takes it");
    const std::unique_ptr<void, Destroy> encoder(tjInitCompress());
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int result = tjCompress2(encoder.get(), &picture.pixels.data()->red, picture.width, 0,
                                   picture.height, TJPF_RGB, &bytes, &size, TJSAMP_420, kQuality, 0);
    const std::unique_ptr<unsigned char, Free> owner(bytes);
    if (result != 0) throw std::runtime_error(std::string("No JPEG: ") + tjGetErrorStr2(encoder.get()));
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

std::string JpegImage(uint16_t width, uint16_t height, const Gradient& colours, const ExifTexts& texts) {
    return JpegImage({width, height, Pixels(width, height, colours)}, texts);
}

std::string JpegImage(const Picture& picture, const ExifTexts& texts) {
    if (picture.pixels.empty()) throw std::invalid_argument("A JPEG picture needs a width and a height");
    return Encoded(picture).insert(kFirstSegments, ExifSegment(texts));
}

std::string WithClaimedSize(std::string jpeg, uint16_t width, uint16_t height) {
    const size_t frame = jpeg.rfind("\xFF\xC0");
    return jpeg.replace(frame + 5, 4, U16(height) + U16(width));
}

}  // namespace samples
