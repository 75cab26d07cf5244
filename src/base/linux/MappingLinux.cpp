#include <sys/mman.h>

#include "base/Mapping.h"

namespace KXP::Platform {
namespace {

void* PlaceOf(void* mapping) {
    return mapping == MAP_FAILED ? nullptr : mapping;
}

}  // namespace

void* Map(size_t bytes) noexcept {
    return PlaceOf(mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}

void* ResizeMapping(void* mapping, size_t bytes, size_t newBytes) noexcept {
    return PlaceOf(mremap(mapping, bytes, newBytes, MREMAP_MAYMOVE));
}

void Unmap(void* mapping, size_t bytes) noexcept {
    munmap(mapping, bytes);
}

}  // namespace KXP::Platform
