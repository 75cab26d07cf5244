// Memory straight from the system, by whole pages.
#pragma once

#include <cstddef>

namespace KXP::Platform {

// Zeroed; null when there is none.
void* Map(size_t bytes) noexcept;
// Makes a mapping larger or smaller, perhaps at another place. Null when there is no memory for it; the old
// one is then as it was.
void* ResizeMapping(void* mapping, size_t bytes, size_t newBytes) noexcept;
void Unmap(void* mapping, size_t bytes) noexcept;

}  // namespace KXP::Platform
