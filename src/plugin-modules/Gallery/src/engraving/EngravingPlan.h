// Plans how to put a text into the movie of an MP4, as "moov/udta/tagc", without moving any other byte. A
// plan consists of batches of writes, each made durable before the next: after an interruption at any point
// players find a whole movie, with the old text or the new one. Media data stays where it is, so that the
// work does not grow with the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/engraving/Mp4Layout.h"

namespace engraving {

// Bytes for one place of the file.
struct Write {
    uint64_t at = 0;
    std::string bytes;
    // Follows them: a copy of a part of the file as it was before the batch.
    uint64_t copyFrom = 0;
    uint64_t copySize = 0;
};

using Batch = std::vector<Write>;

struct Plan {
    std::vector<Batch> batches;
    // The file is truncated to this before the first batch, and after a failure in it.
    uint64_t length = 0;
};

// Replaces every "tagc" of the movie by one that holds `text`; all other user data is kept, byte for byte.
// Throws EngravingError for a file with fragments that has no room, and for malformed user data.
Plan PlanEngraving(media::ByteSource& source, const Mp4Layout& layout, const std::string& text);

}  // namespace engraving
