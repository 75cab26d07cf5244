// One picture that shows what a video is about.
#pragma once

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// Returns the keyframe at a tenth of the video's length, as RGB, upright, with its intended aspect, fitted
// into the box. If it is nearly one colour, as in a lead-in, the keyframes after it are tried, at most five
// in all, and the most varied one is returned. Throws Failure.
Picture DecodeVideoFrame(int fd, Size box, const Budget& budget);

}  // namespace ovnxmedia
