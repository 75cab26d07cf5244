// Ownership from the EXIF tags of a JPEG, and the size of its picture. A scan of the first block for tags,
// not a parser of segments: capture tools put theirs right behind the JFIF segment.
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

// The sides told by the first frame header that the markers from the cursor on lead to; they may be 0.
// Nothing when the chain of markers is broken or reaches the picture's data without one.
std::optional<JpegFrame> FindJpegFrame(ByteCursor& cursor);

// Whether a frame header is found by following the markers from the cursor on, and tells of no more than
// 64 Mi pixels. Bytes that no marker chain leads to are never searched.
bool JpegSizeIsValid(ByteCursor& cursor);

}  // namespace media
