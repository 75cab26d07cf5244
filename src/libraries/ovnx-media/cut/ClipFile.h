// Writes a clip: its boxes, and the samples that it copies out of the source.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/cut/ClipMovie.h"

namespace ovnxmedia {

// Where the clip's media begin in its file.
using MediaPlace = uint64_t;

// The complete "ftyp" of a clip: that of its source. With `asMp4` a movie of the format's first form becomes
// an MP4 that says that its descriptions are of that form.
std::string FileTypeOf(const MovieFile& source, bool asMp4);

// `output` is an empty file. Throws Failure, with OVNX_MEDIA_DAMAGED before anything is written when a sample
// is not in the source, and OVNX_MEDIA_UNWRITABLE when the file cannot be written.
MediaPlace WriteClip(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
                     const ShownRange& range, std::string_view fileType, int output, const Budget& budget);

}  // namespace ovnxmedia
