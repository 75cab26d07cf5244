// Makes a JPEG a capture of the product. ITU-T T.81, annex B.
#pragma once

#include <cstdint>

#include "importing/CaptureMarks.h"
#include "importing/Splice.h"
#include "libraries/media-bytes/ByteSource.h"

namespace importing {

// Puts the product's tags into the first 512 bytes of a JPEG of `size` bytes, in big-endian Exif data after a
// segment APP0, as readers expect them. What the JPEG's own Exif data say goes with them; every other byte
// stays. Throws ImportError unless its segments are whole, with a frame, a scan and an end, or when the tags
// find no place.
Splice MarkJpeg(media::ByteSource& source, uint64_t size, const CaptureMarks& marks);

}  // namespace importing
