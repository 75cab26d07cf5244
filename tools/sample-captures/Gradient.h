// The picture that every sample shows: a colour at the top that passes into another at the bottom.
#pragma once

#include <cstdint>

namespace samples {

struct Rgb {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

struct Gradient {
    Rgb top;
    Rgb bottom;
};

// The colour of row `row` of `rows`: the top colour in row 0, the bottom colour in the last one.
Rgb ColourAt(const Gradient& colours, uint32_t row, uint32_t rows);

}  // namespace samples
