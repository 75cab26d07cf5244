// The orientation that Exif data gives a picture: cameras store rows as the sensor has them.
#pragma once

#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {

// How the stored rows become the picture that is seen: reversed and swapped, in this order.
struct Orientation {
    bool reversesColumns = false;  // the first column is at the right, or at the bottom once swapped
    bool reversesRows = false;     // the first row is at the bottom, or at the right once swapped
    bool swapsSides = false;       // rows become columns

    bool IsUpright() const { return !reversesColumns && !reversesRows && !swapsSides; }
};

// Of Exif data, which begin with their byte order. Upright when they are damaged or name no orientation. Only
// their first directory is read, and no offset in it is followed.
Orientation ReadExifOrientation(media::ByteView exif);

// Of the payload of a JPEG segment APP1; false, with `orientation` as it was, when it holds no Exif data.
bool ReadSegmentOrientation(media::ByteView segment, Orientation& orientation);

}  // namespace ovnxmedia
