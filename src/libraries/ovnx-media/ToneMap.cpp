#include "libraries/ovnx-media/ToneMap.h"

#include <cmath>

namespace ovnxmedia {
namespace {

// Where the drawing together begins; the curve runs on at the same slope.
constexpr double kShoulder = 0.5;

double Compressed(double light) {
    if (light <= kShoulder) return light;
    const double above = (light - kShoulder) / (1 - kShoulder);
    return kShoulder + (1 - kShoulder) * above / (1 + above);
}

// IEC 61966-2-1.
double CodedAsSrgb(double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

}  // namespace

uint8_t ScreenSample(double light) {
    if (!(light > 0)) return 0;
    if (std::isinf(light)) return 255;
    return static_cast<uint8_t>(std::lround(255 * CodedAsSrgb(Compressed(light))));
}

}  // namespace ovnxmedia
