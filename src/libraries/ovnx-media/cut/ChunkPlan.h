// The order in which a clip stores its samples: in pieces of all tracks that are shown at about the same
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "libraries/ovnx-media/cut/ClipTrack.h"

namespace ovnxmedia {

// Samples of one track and one description, side by side.
struct Chunk {
    size_t track;
    size_t first;      // of the clip's samples of the track
    size_t end;        // after the last
    uint64_t place;    // from the beginning of all media
    uint64_t samples;  // runs counted in full
    uint32_t entry;
};

struct ChunkPlan {
    std::vector<Chunk> chunks;
    uint64_t size = 0;  // of all media
};

ChunkPlan PlanChunks(const std::vector<ClipTrack>& tracks);

}  // namespace ovnxmedia
