// From a decoded frame to a picture.
#pragma once

#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// The mean of what falls on each pixel, as RGB. Throws Failure when the frame cannot be scaled.
Picture ScaleFrame(const AVFrame& frame, Size size);

// Turns clockwise by quarters, of which there are 0 to 3.
Picture Turned(Picture picture, unsigned quarters);

}  // namespace ovnxmedia
