// The segments of a JPEG, strictly: an import copies only files that are whole.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "libraries/media-bytes/ByteSource.h"

namespace importing {

struct JpegSegment {
    uint8_t marker = 0;
    uint64_t from = 0;  // of the marker, with the bytes that fill up before it
    uint64_t payload = 0;
    uint64_t to = 0;  // after the segment, and after the data of a scan

    uint64_t payloadSize() const { return to - payload; }
    // Of applications, and comments: not what decoders make the picture of.
    bool IsMetadata() const { return (marker & 0xF0) == 0xE0 || marker == 0xFE; }
};

struct JpegSegments {
    std::vector<JpegSegment> segments;  // without the start and the end of the image
    uint64_t end = 0;                   // after the end of the image
};

// Throws ImportError.
JpegSegments ReadJpegSegments(media::ByteSource& source, uint64_t size);

}  // namespace importing
