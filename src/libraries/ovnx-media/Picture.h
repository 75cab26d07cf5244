// A picture in memory, and the sizes of thumbnails.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/SlabMemory.h"

namespace ovnxmedia {

struct Size {
    uint32_t width = 0;
    uint32_t height = 0;
};

// The largest size of the aspect of `source` that fits into `box` and is not larger than `source`; both sides
// are at least 1. All sides given are at least 1.
Size FitInside(Size source, Size box);

using Samples = KXP::SlabVector<uint8_t>;

// Rows of 8-bit samples from the top, without padding between them.
struct Picture {
    Size size;
    unsigned channels = 3;  // 3: RGB, 4: RGB and alpha that is not multiplied in
    Samples samples;

    size_t Stride() const { return size_t{size.width} * channels; }
};

}  // namespace ovnxmedia
