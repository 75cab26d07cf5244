#include <algorithm>
#include <cstring>

#include <sys/mman.h>

#include "base/Mapping.h"

namespace KXP::Platform {

void* Map(size_t bytes) noexcept {
    void* const mapping = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    return mapping == MAP_FAILED ? nullptr : mapping;
}

void* ResizeMapping(void* mapping, size_t bytes, size_t newBytes) noexcept {
    void* const moved = Map(newBytes);
    if (!moved) return nullptr;
    std::memcpy(moved, mapping, std::min(bytes, newBytes));
    Unmap(mapping, bytes);
    return moved;
}

void Unmap(void* mapping, size_t bytes) noexcept {
    munmap(mapping, bytes);
}

}  // namespace KXP::Platform
