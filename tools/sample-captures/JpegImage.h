// JPEG pictures, with the Exif texts by which a capture tool signs its work.
#pragma once

#include <cstdint>
#include <string>

#include "sample-captures/ExifSegment.h"
#include "sample-captures/Gradient.h"

namespace samples {

// A baseline JPEG: APP0 (JFIF) first, then the Exif segment, if there are texts for it. Throws
// std::invalid_argument when a side is zero, or for texts that do not fit.
std::string JpegImage(uint16_t width, uint16_t height, const Gradient& colours, const ExifTexts& texts = {});

// The same of any picture.
std::string JpegImage(const Picture& picture, const ExifTexts& texts = {});

// The same file with another size in its frame header: a picture that is too large to be decoded, without the
// memory that it would take to make one.
std::string WithClaimedSize(std::string jpeg, uint16_t width, uint16_t height);

}  // namespace samples
