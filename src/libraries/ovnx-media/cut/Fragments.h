// Reads the tables of a file in fragments.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "libraries/media-bytes/Boxes.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/SourceFile.h"
#include "libraries/ovnx-media/cut/Sample.h"

namespace ovnxmedia {

// Returns the samples of the track with this id so far; null for an unknown track.
using TrackFinder = std::function<std::vector<Sample>*(uint32_t id)>;

// Appends what the fragments have to the tracks, `most` samples at most. `movie` is the content of the
// "moov". Throws Failure.
void ReadFragments(SourceFile& file, const std::vector<media::Box>& fragments, std::string_view movie,
                   const TrackFinder& find, size_t most, const Budget& budget);

}  // namespace ovnxmedia
