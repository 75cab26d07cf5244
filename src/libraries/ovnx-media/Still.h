// Still pictures of every format that is known here.
#pragma once

#include "OvnxMedia.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// What the file is by its first bytes. Throws Failure when it cannot be read.
OvnxMediaKind ProbeKind(SourceFile& file);

// The picture of a PNG, JPEG or OpenEXR file, averaged down to fit inside `box`. Throws Failure.
Picture DecodeStill(int fd, Size box, const Budget& budget);

}  // namespace ovnxmedia
