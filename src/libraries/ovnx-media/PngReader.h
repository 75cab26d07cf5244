// Thumbnails of PNG files, averaged down row by row, so that memory does not grow with the picture. Every
// colour type and depth becomes 8-bit RGB, or RGBA where the file has transparency.
#pragma once

#include "libraries/ovnx-media/Allowance.h"
#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Picture.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// Fits inside `box`. Throws Failure, also for a wrong CRC anywhere before the last pixel.
Picture ReadPng(SourceFile& file, Size box, Allowance& allowance, const Budget& budget);

}  // namespace ovnxmedia
