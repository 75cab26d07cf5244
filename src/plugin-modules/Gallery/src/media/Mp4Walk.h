// Ownership and metadata from the tagged-characteristic box of an MP4: moov/udta/tagc holds the block.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/media/ByteCursor.h"
#include "plugin-modules/Gallery/src/media/SniffResult.h"

namespace media {

// A flat walk over the boxes (ISO/IEC 14496-12, 4.2) that enters the first moov and the first udta and steps
// over all else. Returns kInspected, 0x8007000D for a malformed file or 0x80004005 for a box without
// content; what was found before stays.
int32_t WalkMp4(ByteCursor& cursor, SniffResult& result);

}  // namespace media
