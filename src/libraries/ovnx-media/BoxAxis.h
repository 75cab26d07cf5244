// How the pixels along one side of a picture fall into the boxes that they are averaged in. All boxes are
// equally long, and a pixel that lies across the edge of two counts in each for the part that lies there.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>

namespace ovnxmedia {

class BoxAxis {
  public:
    // Boxes are no more than pixels, and at most 65,535, so that a weight fits 16 bits.
    BoxAxis(uint32_t pixels, uint32_t boxes)
        : box_(pixels / std::gcd(pixels, boxes)), pixel_(boxes / std::gcd(pixels, boxes)) {}

    // In units of weight: a whole box and a whole pixel. The pixel is 1 where all boxes hold whole pixels.
    uint32_t box() const { return box_; }
    uint32_t pixel() const { return pixel_; }

    // The first box that a pixel falls into, its weight there, and the rest, which falls into the next box.
    struct Share {
        uint32_t box;
        uint16_t weight;
        uint16_t rest;
    };
    Share Of(uint32_t index) const {
        const uint64_t from = uint64_t{index} * pixel_;
        const uint64_t box = from / box_;
        const uint64_t weight = std::min<uint64_t>(pixel_, (box + 1) * box_ - from);
        return {static_cast<uint32_t>(box), static_cast<uint16_t>(weight),
                static_cast<uint16_t>(pixel_ - weight)};
    }

  private:
    uint32_t box_;
    uint32_t pixel_;
};

}  // namespace ovnxmedia
