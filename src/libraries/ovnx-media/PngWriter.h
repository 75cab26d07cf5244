// Pictures as PNG files in memory.
#pragma once

#include <cstdint>

#include "libraries/ovnx-media/FileBytes.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// Throws Failure when the file would be larger than `limit`.
FileBytes WritePng(const Picture& picture, uint64_t limit);

}  // namespace ovnxmedia
