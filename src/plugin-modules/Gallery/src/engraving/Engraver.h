// Puts the block of metadata into a capture's file.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/engraving/CaptureRequestInfo.h"

// Engraves `info` into an MP4, replacing what was engraved before. False, and logged, with the file
// untouched, for anything but an MP4 that is understood, and without room on its disk; throws what
// MakeMetadata throws. Wherever it is interrupted, the file plays, with the old block or the new one. The
// work grows with the movie's headers and not with its data. Any thread; edits of the same file wait for each
// other.
bool AddMetadatatoFile(const std::string& outputFile, const CaptureRequestInfo* info);

class Engraver {
  public:
    bool apply(const std::string& file, const CaptureRequestInfo& info) {
        return AddMetadatatoFile(file, &info);
    }
};
