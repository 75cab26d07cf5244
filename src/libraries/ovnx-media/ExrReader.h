// Thumbnails of OpenEXR files: the preview picture that is stored in them, where it is large enough, and
// otherwise the picture itself, averaged down as light and then fitted to a screen.
#pragma once

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// Fits inside `box`. The first part with the channels R, G and B, or Y, counts. Colours are stored as they
// look over black and shown that way, without alpha. Throws Failure.
Picture ReadExr(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

}  // namespace ovnxmedia
