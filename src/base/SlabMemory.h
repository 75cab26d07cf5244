// Memory for what thousands of requests hold while they wait. It comes from the system in slabs of its own
// and goes back slab by slab: from the process's heap, a burst would never return, because anything small
// that is allocated after it, by anybody, keeps all that lies below.
#pragma once

#include <cstddef>
#include <string>

namespace KXP {

// Any thread. Suits every type. Throws std::bad_alloc.
void* AllocateInSlab(size_t size);
void FreeInSlab(void* block) noexcept;

// Bytes that slabs take from the system now.
size_t SlabBytes();

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

}  // namespace KXP
