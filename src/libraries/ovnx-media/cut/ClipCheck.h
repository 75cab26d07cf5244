// Checks a clip before anybody relies on it.
#pragma once

#include <vector>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/cut/ClipFile.h"

namespace ovnxmedia {

// Opens the clip again, by another reader than the one that has written it: every track is there, with the
// sample descriptions of the source, and its first and its last sample are the source's, byte for byte.
// Throws Failure, with OVNX_MEDIA_UNFAITHFUL when anything differs.
void CheckClip(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
               MediaPlace base, int output, const Budget& budget);

}  // namespace ovnxmedia
