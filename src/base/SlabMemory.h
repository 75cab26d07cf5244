// Memory for what many requests hold for a short time: messages, answers, pictures. Small blocks share slabs
// of memory that go back to the system when their last block is freed, large blocks are mapped one by one. A
// little that is free is kept for the next request.
// The process's heap would keep them: each thread has a part of it, and what lies in a part, freed by
// anybody, returns only when nothing above it is in use. Each shared library has slabs of its own and frees
// only what it has allocated itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace KXP {

// Any thread. A block suits every type. Throws std::bad_alloc.
void* AllocateInSlab(size_t size);
// Makes a block larger or smaller; null stands for an empty one. When it throws, the block stays as it was.
void* ResizeInSlab(void* block, size_t size);
void FreeInSlab(void* block) noexcept;

// Bytes of addresses that slabs and large blocks have of the system now.
size_t SlabBytes();

struct SlabDeleter {
    void operator()(void* block) const noexcept { FreeInSlab(block); }
};

// For a class whose objects lie in slabs, derived ones included.
class InSlab {
  public:
    static void* operator new(size_t size) { return AllocateInSlab(size); }
    static void operator delete(void* object) noexcept { FreeInSlab(object); }

  protected:
    ~InSlab() = default;
};

// For containers.
template <typename T>
struct SlabAllocator {
    using value_type = T;

    SlabAllocator() = default;
    template <typename U>
    SlabAllocator(const SlabAllocator<U>&) noexcept {}

    T* allocate(size_t count) {
        static_assert(alignof(T) <= alignof(std::max_align_t));
        // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer.
        if (count > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
        // NOLINTNEXTLINE(bugprone-sizeof-expression)
        return static_cast<T*>(AllocateInSlab(count * sizeof(T)));
    }
    void deallocate(T* block, size_t) noexcept { FreeInSlab(block); }

    template <typename U>
    bool operator==(const SlabAllocator<U>&) const noexcept {
        return true;
    }
    template <typename U>
    bool operator!=(const SlabAllocator<U>&) const noexcept {
        return false;
    }
};

using SlabString = std::basic_string<char, std::char_traits<char>, SlabAllocator<char>>;
template <typename T>
using SlabVector = std::vector<T, SlabAllocator<T>>;

}  // namespace KXP
