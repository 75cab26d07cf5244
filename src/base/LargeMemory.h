// Memory for what may be large and is soon freed, such as pictures and answers. Large blocks are mapped one
// by one, and freeing them returns them to the system at once. The process's heap would keep them: each
// thread has a part of it, and what lies in a part, freed by anybody, returns only when nothing above it is
// in use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KXP {

// From this many bytes on, a block is mapped; a smaller one costs less in the heap.
constexpr size_t kLargeBytes = size_t{32} << 10;

// Any thread. A block suits every type. Throws std::bad_alloc.
void* AllocateLarge(size_t size);
// Makes a block larger or smaller; null stands for an empty one. When it throws, the block stays as it was.
void* ResizeLarge(void* block, size_t size);
void FreeLarge(void* block) noexcept;

struct LargeDeleter {
    void operator()(void* block) const noexcept { FreeLarge(block); }
};

// For containers.
template <typename T>
struct LargeAllocator {
    using value_type = T;

    LargeAllocator() = default;
    template <typename U>
    LargeAllocator(const LargeAllocator<U>&) noexcept {}

    T* allocate(size_t count) {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        if (count > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
        return static_cast<T*>(AllocateLarge(count * sizeof(T)));
    }
    void deallocate(T* block, size_t) noexcept { FreeLarge(block); }

    template <typename U>
    bool operator==(const LargeAllocator<U>&) const noexcept {
        return true;
    }
    template <typename U>
    bool operator!=(const LargeAllocator<U>&) const noexcept {
        return false;
    }
};

using LargeString = std::basic_string<char, std::char_traits<char>, LargeAllocator<char>>;
template <typename T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

}  // namespace KXP
