// The memory that one input may take. What its header demands is deducted here before it is allocated.
#pragma once

#include <cstdint>

#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

class Allowance {
  public:
    // Throws Failure when that much is not left.
    void Take(uint64_t bytes) {
        if (bytes > left_) throw Failure(OVNX_MEDIA_OVER_LIMIT, "needs too much memory");
        left_ -= bytes;
    }
    uint64_t left() const { return left_; }

  private:
    uint64_t left_ = OVNX_MEDIA_MAX_ALLOCATION;
};

// Throws Failure when the picture is empty or has more pixels than are decoded.
inline void CheckPixels(Size size) {
    if (size.width == 0 || size.height == 0) throw Failure(OVNX_MEDIA_DAMAGED, "no pixels");
    if (uint64_t{size.width} * size.height > OVNX_MEDIA_MAX_PIXELS)
        throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many pixels");
}

}  // namespace ovnxmedia
