// Light to 8-bit samples for a screen.
#pragma once

#include <cstdint>

namespace ovnxmedia {

// What is dark or middling stays as it is, and brighter light is drawn together, so that the brightest still
// tells from the bright: 1, the white of an ordinary picture, becomes 0.75 of what the screen can give. The
// result is coded as sRGB. No light for what is negative or no number.
uint8_t ScreenSample(double light);

}  // namespace ovnxmedia
