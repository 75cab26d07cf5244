#include "libraries/ovnx-media/Picture.h"

#include <algorithm>

namespace ovnxmedia {

Size FitInside(Size source, Size box) {
    if (source.width <= box.width && source.height <= box.height) return source;
    const auto scaled = [](uint32_t side, uint32_t from, uint32_t to) {
        return static_cast<uint32_t>(std::max<uint64_t>(1, (uint64_t{side} * to + from / 2) / from));
    };
    // The side that is further out of the box decides.
    if (uint64_t{source.width} * box.height >= uint64_t{source.height} * box.width)
        return {box.width, std::min(box.height, scaled(source.height, source.width, box.width))};
    return {std::min(box.width, scaled(source.width, source.height, box.height)), box.height};
}

}  // namespace ovnxmedia
