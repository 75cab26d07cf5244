// Ownership and metadata from the text chunks of a PNG. https://www.w3.org/TR/png/#11textinfo
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

namespace media {

// Looks at the first seven chunks, none larger than 4096 bytes, and never past the pixels. Always kInspected:
// a file that ends too soon keeps what was found.
int32_t WalkPng(ByteCursor& cursor, SniffResult& result);

}  // namespace media
