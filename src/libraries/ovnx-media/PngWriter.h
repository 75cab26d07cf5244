// Pictures as PNG files in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// Throws Failure when the file would be larger than `limit`.
std::vector<uint8_t> WritePng(const Picture& picture, uint64_t limit);

}  // namespace ovnxmedia
