#include "sample-captures/ExrImage.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "sample-captures/MediaBytes.h"

namespace samples {
namespace {

using namespace std::string_literals;

// OpenEXR is little-endian throughout.
std::string Little(std::string bigEndian) {
    std::reverse(bigEndian.begin(), bigEndian.end());
    return bigEndian;
}

std::string Int(uint32_t value) {
    return Little(U32(value));
}

// A display value of 0 to 255 as half-precision linear light, near enough for a sample: gamma 2.2.
std::string Half(uint8_t display) {
    const double light = std::pow(display / 255.0, 2.2);
    int exponent = 0;
    const double fraction = std::frexp(light, &exponent);  // 0.5 to 1, or 0
    constexpr int kBias = 14;                              // 15, less one as a half's fraction is 1 to 2
    if (exponent + kBias < 1) return Little(U16(0));
    // The fraction may round up to 1024; that carries into the exponent, as it should.
    const auto mantissa = static_cast<int>(std::lround((fraction * 2 - 1) * 1024));
    return Little(U16(static_cast<uint16_t>(((exponent + kBias) << 10) + mantissa)));
}

std::string Attribute(std::string_view name, std::string_view type, const std::string& value) {
    return std::string(name) + '\0' + std::string(type) + '\0' + Int(static_cast<uint32_t>(value.size())) +
           value;
}

std::string Channel(char name) {
    constexpr uint32_t kHalf = 1;
    const std::string notLinear(4, '\0');
    return name + "\0"s + Int(kHalf) + notLinear + Int(1) + Int(1);
}

std::string Header(uint16_t width, uint16_t height) {
    const std::string window = Int(0) + Int(0) + Int(width - 1u) + Int(height - 1u);
    const std::string one = Int(0x3F800000);  // 1 as a float
    return "\x76\x2F\x31\x01"s + Int(2) +     // magic number; version 2, no flags
           Attribute("channels", "chlist", Channel('B') + Channel('G') + Channel('R') + "\0"s) +
           Attribute("compression", "compression", "\0"s) + Attribute("dataWindow", "box2i", window) +
           Attribute("displayWindow", "box2i", window) + Attribute("lineOrder", "lineOrder", "\0"s) +
           Attribute("pixelAspectRatio", "float", one) +
           Attribute("screenWindowCenter", "v2f", Int(0) + Int(0)) +
           Attribute("screenWindowWidth", "float", one) + "\0"s;
}

std::string Repeated(const std::string& bytes, uint16_t times) {
    std::string out;
    for (int i = 0; i < times; ++i)
        out += bytes;
    return out;
}

}  // namespace

std::string ExrImage(uint16_t width, uint16_t height, const Gradient& colours) {
    if (width == 0 || height == 0) throw std::invalid_argument("An EXR picture needs a width and a height");
    const std::string header = Header(width, height);
    const uint32_t lineBytes = width * 6u;
    std::string offsets;
    std::string lines;
    for (uint32_t y = 0; y < height; ++y) {
        const Rgb colour = ColourAt(colours, y, height);
        offsets += Little(U64(header.size() + size_t{height} * 8 + lines.size()));
        lines += Int(y) + Int(lineBytes) + Repeated(Half(colour.blue), width) +
                 Repeated(Half(colour.green), width) + Repeated(Half(colour.red), width);
    }
    return header + offsets + lines;
}

}  // namespace samples
