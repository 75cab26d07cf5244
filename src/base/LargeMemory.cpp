#include "base/LargeMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "base/Mapping.h"
#include "base/Sanitizers.h"

namespace KXP {
namespace {

// Before each block.
struct alignas(std::max_align_t) Header {
    size_t size;    // of the block
    size_t mapped;  // bytes of its mapping; 0 in the heap
};

// The address sanitizer sees no use after free in mappings.
bool IsMapped(size_t size) {
    return size >= kLargeBytes && !kHasAddressSanitizer;
}

size_t MappingFor(size_t size) {
    constexpr size_t kStep = size_t{4} << 10;
    return (sizeof(Header) + size + kStep - 1) / kStep * kStep;
}

void* Finish(void* place, size_t size, size_t mapped) {
    if (!place) throw std::bad_alloc();
    return new (place) Header{size, mapped} + 1;
}

Header* HeaderOf(void* block) {
    return static_cast<Header*>(block) - 1;
}

void CheckSize(size_t size) {
    if (size > SIZE_MAX / 2) throw std::bad_alloc();
}

}  // namespace

void* AllocateLarge(size_t size) {
    CheckSize(size);
    const size_t mapped = MappingFor(size);
    void* const mapping = IsMapped(size) ? Platform::Map(mapped) : nullptr;
    if (mapping) return Finish(mapping, size, mapped);
    // The number of mappings is limited, too.
    return Finish(std::malloc(sizeof(Header) + size), size, 0);
}

void* ResizeLarge(void* block, size_t size) {
    if (!block) return AllocateLarge(size);
    CheckSize(size);
    Header* const header = HeaderOf(block);
    if (!header->mapped && !IsMapped(size))
        return Finish(std::realloc(header, sizeof(Header) + size), size, 0);
    if (header->mapped && IsMapped(size)) {
        const size_t mapped = MappingFor(size);
        return Finish(Platform::ResizeMapping(header, header->mapped, mapped), size, mapped);
    }
    void* const moved = AllocateLarge(size);
    std::memcpy(moved, block, std::min(header->size, size));
    FreeLarge(block);
    return moved;
}

void FreeLarge(void* block) noexcept {
    if (!block) return;
    Header* const header = HeaderOf(block);
    if (header->mapped) {
        Platform::Unmap(header, header->mapped);
    } else {
        std::free(header);
    }
}

}  // namespace KXP
