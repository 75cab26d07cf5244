// What decoding a JPEG file will need, read from its markers alone: nothing is allocated or decoded.
#pragma once

#include <cstddef>
#include <cstdint>

#include "libraries/ovnx-media/ExifOrientation.h"
#include "libraries/ovnx-media/FileBytes.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

struct JpegHeader {
    Size size;
    unsigned components = 0;
    unsigned scans = 0;
    // What decoders keep of the whole picture when it has more than one scan, otherwise 0.
    uint64_t coefficientBytes = 0;
    Orientation orientation;
};

// Throws Failure when the markers lead to no frame and scan.
JpegHeader ReadJpegHeader(const FileBytes& file);

}  // namespace ovnxmedia
