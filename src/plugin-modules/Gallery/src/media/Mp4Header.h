// A video's duration, audio layout and picture size, from the headers of an MP4 (ISO/IEC 14496-12, 8.2.2 and
// 8.3.2) and without a media framework.
#pragma once

#include <cstdint>
#include <string>

#include "libraries/media-bytes/ByteSource.h"

namespace media {

struct Mp4HeaderInfo {
    // Seconds: the file's number divided by its time scale, unchecked. With a time scale of 0 it is infinite
    // or NaN, and a hostile file can make it larger than any integer: check it before converting it.
    double duration = 0;
    std::string audioType;  // "Single" or "Separate"
    unsigned int width = 0;
    unsigned int height = 0;
};

// Walks forward over the boxes, into moov and, with `wantSize`, into tracks, until the first header of a
// track (`wantSize`) or of the movie. Returns 1 when done, whether or not there is one; 0x80004005 when the
// walk comes to where there is nothing to read; 0x8007000D for a malformed file. First sets the numbers of
// `info` to 0; the audio type keeps its value unless the file has one. A box that begins within the last
// 120 bytes of the source is not looked at.
int32_t ReadMp4Header(ByteSource& source, bool wantSize, Mp4HeaderInfo& info);

// The same for a file, with each part in a place of its own. 0x80004005 when it cannot be opened, which
// leaves all of them as they were. Any thread.
int32_t FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType, bool wantSize,
                          unsigned int& width, unsigned int& height);

}  // namespace media
