// Writes a clip: its boxes, and the samples that it copies out of the source.
#pragma once

#include <vector>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/cut/ClipMovie.h"

namespace ovnxmedia {

// Where the clip's media begin in its file.
using MediaPlace = uint64_t;

// `output` is an empty file. Throws Failure, with OVNX_MEDIA_DAMAGED before anything is written when a sample
// is not in the source, and OVNX_MEDIA_UNWRITABLE when the file cannot be written.
MediaPlace WriteClip(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                     const ShownRange& range, int output, const Budget& budget);

}  // namespace ovnxmedia
