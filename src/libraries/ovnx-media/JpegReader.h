// Thumbnails of JPEG files, decoded at the smallest reduced size that still covers them.
#pragma once

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// Fits inside `box`. Throws Failure. From doubtful data, such as a file cut short within its last scan, it
// returns the picture that the decoder makes; only what the decoder gives up on is a failure.
Picture ReadJpeg(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

}  // namespace ovnxmedia
