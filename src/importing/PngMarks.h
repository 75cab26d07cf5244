// Makes a PNG a capture of the product. https://www.w3.org/TR/png/
#pragma once

#include <cstdint>

#include "importing/CaptureMarks.h"
#include "importing/Splice.h"
#include "libraries/media-bytes/ByteSource.h"

namespace importing {

// Puts text chunks after the header of a PNG of `size` bytes; every other byte stays. Throws ImportError
// unless its chunks are whole, with pixels and an end.
Splice MarkPng(media::ByteSource& source, uint64_t size, const CaptureMarks& marks);

}  // namespace importing
