// How to put a text into the movie of an MP4, as "moov/udta/tagc", without moving any other byte. What is
// planned are steps, each made durable before the next: whenever it ends, players find a whole movie, with
// the old text or the new one. Media data stays where it is, so that the work does not grow with the file.
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
    // Behind them, a part of the file as it is before the step.
    uint64_t copyFrom = 0;
    uint64_t copySize = 0;
};

using Step = std::vector<Write>;

struct Plan {
    std::vector<Step> steps;
    // What the file is cut to before the first step, and after one that fails in the first.
    uint64_t length = 0;
};

// Replaces every "tagc" of the movie by one that holds `text`; whatever else its user data holds is kept,
// byte for byte. Throws EngravingError for a file without room that has fragments, or user data that is none.
Plan PlanEngraving(media::ByteSource& source, const Mp4Layout& layout, const std::string& text);

}  // namespace engraving
