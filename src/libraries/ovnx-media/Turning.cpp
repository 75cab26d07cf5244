#include "libraries/ovnx-media/Turning.h"

#include <algorithm>
#include <utility>

namespace ovnxmedia {

Picture Turn(Picture picture, const Orientation& orientation, Allowance& allowance) {
    if (orientation.IsUpright()) return picture;
    allowance.Take(picture.samples.size());
    const Size stored = picture.size;
    Picture turned = picture;
    if (orientation.swapsSides) turned.size = {stored.height, stored.width};
    uint8_t* to = turned.samples.data();
    for (uint32_t y = 0; y < turned.size.height; ++y) {
        for (uint32_t x = 0; x < turned.size.width; ++x, to += picture.channels) {
            uint32_t column = orientation.swapsSides ? y : x;
            uint32_t row = orientation.swapsSides ? x : y;
            if (orientation.reversesColumns) column = stored.width - 1 - column;
            if (orientation.reversesRows) row = stored.height - 1 - row;
            const size_t from = row * picture.Stride() + size_t{column} * picture.channels;
            std::copy_n(&picture.samples[from], picture.channels, to);
        }
    }
    return turned;
}

}  // namespace ovnxmedia
