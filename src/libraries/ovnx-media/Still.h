// Still pictures of every format that is known here.
#pragma once

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// The picture of a PNG, JPEG or OpenEXR file, averaged down to fit inside `box`. Throws Failure.
Picture DecodeStill(int fd, Size box, const Budget& budget);

}  // namespace ovnxmedia
