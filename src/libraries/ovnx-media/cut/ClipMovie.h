// Writes the "moov" of a clip: the source's, with the tables, times and chapters of the clip.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libraries/ovnx-media/cut/ChunkPlan.h"
#include "libraries/ovnx-media/cut/SourceMovie.h"

namespace ovnxmedia {

// In units of 100 ns of the source.
struct ShownRange {
    uint64_t start;
    uint64_t end;
};

// The complete box, whose size does not depend on `base`, where all media begin in the file. Tracks of the
// source that are not among `tracks` are left out.
std::string WriteMovie(const SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                       const ShownRange& range, uint64_t base);

}  // namespace ovnxmedia
