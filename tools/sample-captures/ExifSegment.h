// The Exif segment of a JPEG in which a capture tool signs its work.
#pragma once

#include <string>

namespace samples {

// Texts of the first directory. An empty one is left out.
struct ExifTexts {
    std::string description;     // 01 0E; also the place of "360Mono" and its like
    std::string make;            // 01 0F
    std::string model;           // 01 10
    std::string software;        // 01 31
    std::string drsName;         // 00 0B, without a NUL, because the reader takes it by its count
    std::string drsProfileName;  // C6 F6, without a NUL too
};

// The whole APP1 segment, big-endian; empty when all texts are. Throws std::invalid_argument for texts that
// do not fit, and for one that the product's scan of the bytes would miss or misread.
std::string ExifSegment(const ExifTexts& texts);

}  // namespace samples
