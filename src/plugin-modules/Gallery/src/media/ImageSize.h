// The size of a picture, from its file's header: PNG, JPEG, OpenEXR, GIF, BMP and WebP, recognised by their
// bytes and not by their names. No pixel is decoded.
#pragma once

#include <string>

#include "libraries/media-bytes/ByteSource.h"

namespace media {

// Pixels, each 1 to INT32_MAX.
struct ImageSize {
    unsigned int width = 0;
    unsigned int height = 0;
};

// False, with `size` untouched, for any other format, for a header that is cut off or damaged,
// and for a picture without pixels. Looks at no more than the first 64 MiB. The size is that of the stored
// picture, before a viewer turns it; of an OpenEXR file that of the display window, which is what viewers
// show, and of an animation that of its canvas.
bool ReadImageSize(ByteSource& source, ImageSize& size);

// The same for a file, which must be a regular one. Any thread.
bool GetImageFileDimensions(const std::string& path, unsigned int& width, unsigned int& height);

}  // namespace media
