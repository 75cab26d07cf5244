// The memory of libpng and, through it, of zlib, whose tables are large and live as long as one picture.
#pragma once

#include <png.h>

namespace ovnxmedia {

// Null when there is none, as libpng expects.
png_voidp PngAllocate(png_structp png, png_alloc_size_t size) noexcept;
void PngFree(png_structp png, png_voidp block) noexcept;

}  // namespace ovnxmedia
