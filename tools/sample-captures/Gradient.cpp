#include "sample-captures/Gradient.h"

namespace samples {
namespace {

uint8_t Blend(uint8_t from, uint8_t to, int64_t step, int64_t steps) {
    return static_cast<uint8_t>(from + (to - from) * step / steps);
}

}  // namespace

Rgb ColourAt(const Gradient& colours, uint32_t row, uint32_t rows) {
    if (rows < 2) return colours.top;
    const uint32_t last = rows - 1;
    return {Blend(colours.top.red, colours.bottom.red, row, last),
            Blend(colours.top.green, colours.bottom.green, row, last),
            Blend(colours.top.blue, colours.bottom.blue, row, last)};
}

}  // namespace samples
