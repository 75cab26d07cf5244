// From the system's images to pictures.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// Both return the whole image, scaled to the size, in the colours of sRGB, and throw std::bad_alloc: with
// alpha if the image has it, and always without.
Picture DrawImage(CGImageRef image, Size size);
Picture DrawOpaque(CGImageRef image, Size size);

}  // namespace ovnxmedia
