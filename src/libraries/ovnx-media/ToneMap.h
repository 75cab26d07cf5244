// Light to 8-bit samples for a screen.
#pragma once

#include <cstdint>

namespace ovnxmedia {

// Dark and middle tones stay as they are, and brighter ones are compressed, so that the brightest can still
// be distinguished: 1, the white of an ordinary picture, becomes 0.75 of what the screen can show. The result
// is coded as sRGB. Negative numbers and NaN become 0.
uint8_t ScreenSample(double light);

}  // namespace ovnxmedia
