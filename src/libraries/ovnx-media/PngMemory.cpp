#include "libraries/ovnx-media/PngMemory.h"

#include <new>

#include "base/SlabMemory.h"

namespace ovnxmedia {

png_voidp PngAllocate(png_structp, png_alloc_size_t size) noexcept {
    try {
        return KXP::AllocateInSlab(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void PngFree(png_structp, png_voidp block) noexcept {
    KXP::FreeInSlab(block);
}

}  // namespace ovnxmedia
