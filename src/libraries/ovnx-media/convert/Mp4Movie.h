// The "moov" of a recording: that of its first packets, with the tables and times of all.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/convert/TrackTables.h"

namespace ovnxmedia {

// `movie` is the content of the template's "moov". Of `tracks`, which are finished, the first `recorded`
// belong to the recording, and are in the template only in part. The box is written in pieces, as the tables
// of a long recording take megabytes. Throws Failure.
void WriteMovieOf(std::string_view movie, const std::vector<const TrackTables*>& tracks, size_t recorded,
                  const std::function<void(std::string_view)>& write);

}  // namespace ovnxmedia
