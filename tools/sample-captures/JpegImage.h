// JPEG pictures made in code. However large the picture, the file is small: 12 bits for 16 by 16 pixels.
#pragma once

#include <cstdint>
#include <string>

#include "sample-captures/ExifSegment.h"
#include "sample-captures/Gradient.h"

namespace samples {

// A baseline JPEG of at least 512 bytes: APP0 (JFIF) first, then the Exif segment, if there are texts for
// it. Throws std::invalid_argument when a side is zero, or for texts that do not fit.
std::string JpegImage(uint16_t width, uint16_t height, const Gradient& colours, const ExifTexts& texts = {});

}  // namespace samples
