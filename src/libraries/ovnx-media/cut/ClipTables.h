// Writes the tables of one track of a clip.
#pragma once

#include <cstdint>
#include <string>

#include "libraries/ovnx-media/cut/ChunkPlan.h"

namespace ovnxmedia {

// How the track's own time line in the clip differs from that in the source, in units of the track.
struct TimeShift {
    int64_t decoded;  // earlier by this
    int64_t shown;    // and this later again: players disagree about frames shown before they are decoded

    int64_t Media(int64_t sourceTime) const { return sourceTime - decoded + shown; }
};
TimeShift ShiftOf(const ClipTrack& track);

// The content of the "stbl". The sample descriptions are the source's, byte for byte. `index` is the number
// of the track in the plan, and all media begin at `base` of the file.
std::string WriteTables(const ClipTrack& track, size_t index, const ChunkPlan& plan, uint64_t base);

}  // namespace ovnxmedia
