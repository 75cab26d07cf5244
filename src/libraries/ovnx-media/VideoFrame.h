// One picture that shows what a video is about.
#pragma once

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// The keyframe at a tenth of the video's length, as RGB, upright and as wide as it is meant to be shown,
// fitted into the box. While that is nearly one colour, as in a lead-in, the keyframes behind it are tried,
// five at most; of those the most varied is taken. Throws Failure.
Picture DecodeVideoFrame(int fd, Size box, const Budget& budget);

}  // namespace ovnxmedia
