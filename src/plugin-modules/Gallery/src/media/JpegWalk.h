// Ownership from the EXIF tags of a JPEG, and the size of its picture. A scan of the first block for tags,
// not a parser of segments: capture tools put theirs right behind the JFIF segment.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

namespace media {

// Expects the cursor at the start of the file. Always kInspected.
int32_t WalkJpeg(ByteCursor& cursor, SniffResult& result);

// Whether a frame header is found by following the markers from the cursor on, and tells of no more than
// 64 Mi pixels. Bytes that no marker chain leads to are never searched.
bool JpegSizeIsValid(ByteCursor& cursor);

}  // namespace media
