// The boxes of an MP4 file, apart from its frames.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libraries/media-bytes/Boxes.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

struct MovieFile {
    std::string fileType;  // the complete "ftyp"; empty in files that are older than it
    std::string movie;     // the content of the first "moov"
    // The other boxes that are not about the place of frames, complete and in a row.
    std::string inFront;  // of the "moov"
    std::string after;
    std::vector<media::Box> fragments;  // each "moof"
};

// Throws Failure: where there is no movie, where a limit is exceeded, and where reading fails.
MovieFile ReadMovieFile(SourceFile& file, const Budget& budget);

// Reads a range of the file. Throws Failure when it is not there.
std::string ReadRange(SourceFile& file, uint64_t from, uint64_t size);

}  // namespace ovnxmedia
