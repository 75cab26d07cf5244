// Pictures that files are made of. Most samples show a colour at the top that passes into another at the
// bottom.
#pragma once

#include <cstdint>
#include <vector>

namespace samples {

struct Rgb {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

// `width` times `height` pixels, row by row.
struct Picture {
    uint16_t width;
    uint16_t height;
    std::vector<Rgb> pixels;
};

struct Gradient {
    Rgb top;
    Rgb bottom;
};

// The colour of row `row` of `rows`: the top colour in row 0, the bottom colour in the last one.
Rgb ColourAt(const Gradient& colours, uint32_t row, uint32_t rows);

}  // namespace samples
