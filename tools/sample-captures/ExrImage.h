// OpenEXR pictures made in code.
#pragma once

#include <cstdint>
#include <string>

#include "sample-captures/Gradient.h"

namespace samples {

// One part, scan lines, half-precision RGB, not compressed: six bytes for a pixel. Throws
// std::invalid_argument when a side is zero. https://openexr.com/en/latest/OpenEXRFileLayout.html
std::string ExrImage(uint16_t width, uint16_t height, const Gradient& colours);

}  // namespace samples
