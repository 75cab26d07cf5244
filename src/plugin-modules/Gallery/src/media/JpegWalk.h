// Ownership from the EXIF tags of a JPEG, and the size of its picture. A scan of the first block for tags,
// not a parser of segments: capture tools put theirs right after the JFIF segment.
#pragma once

#include <cstdint>
#include <optional>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

namespace media {

// Expects the cursor at the start of the file. Always kInspected.
int32_t WalkJpeg(ByteCursor& cursor, SniffResult& result);

struct JpegFrame {
    uint16_t width;
    uint16_t height;
};

// The sides in the first frame header on the chain of markers that starts at the cursor; they may be 0.
// Nothing when the chain is broken or reaches the picture's data first.
std::optional<JpegFrame> FindJpegFrame(ByteCursor& cursor);

// Whether the chain of markers has such a frame header, with at most 64 Mi pixels. Bytes outside the chain
// are never searched.
bool JpegSizeIsValid(ByteCursor& cursor);

}  // namespace media
