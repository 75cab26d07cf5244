// The headers of an OpenEXR file as far as its size goes, read before the library that decodes it allocates
// by them. https://openexr.com/en/latest/OpenEXRFileLayout.html
#pragma once

#include <cstdint>

#include "libraries/ovnx-media/Picture.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// Throws Failure for a file that exceeds a limit in any of its parts, is cut short in its headers, or holds
// no plain picture but deep samples or tiles at several resolutions.
void CheckExrHeaders(SourceFile& file);

}  // namespace ovnxmedia
