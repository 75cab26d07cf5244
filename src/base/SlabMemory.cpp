#include "base/SlabMemory.h"

#include <mutex>
#include <new>

#include "base/Mapping.h"
#include "base/Sanitizers.h"

namespace KXP {
namespace {

// What lives long among what does not keeps a whole slab.
constexpr size_t kSlabBytes = size_t{256} << 10;
constexpr size_t kAlignment = alignof(std::max_align_t);

struct alignas(std::max_align_t) Slab {
    size_t bytes;
    size_t used;
    size_t live;  // blocks
};

// Before each block.
struct alignas(std::max_align_t) Header {
    Slab* slab;
};

constexpr size_t kLargestShared = kSlabBytes - sizeof(Slab);

Slab* MapSlab(size_t bytes) {
    void* const place = Platform::Map(bytes);
    if (!place) throw std::bad_alloc();
    return new (place) Slab{bytes, sizeof(Slab), 0};
}

// A slab takes blocks one after the other until it is full, and begins again when the last of them is freed.
class Slabs {
  public:
    // What is in use then is in use by a thread that was abandoned.
    ~Slabs() {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (current_ && current_->live == 0) Unmap(current_);
        current_ = nullptr;
    }

    void* Allocate(size_t size) {
        if (size > kSlabBytes) return AllocateAlone(size);
        const size_t needed = sizeof(Header) + (size + kAlignment - 1) / kAlignment * kAlignment;
        if (needed > kLargestShared) return AllocateAlone(size);
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!current_ || current_->used + needed > kSlabBytes) {
            Slab* const next = MapSlab(kSlabBytes);
            bytes_ += kSlabBytes;
            // The full one is unmapped with its last block.
            current_ = next;
        }
        return Take(*current_, needed);
    }

    void Free(void* block) noexcept {
        Slab* const slab = (static_cast<Header*>(block) - 1)->slab;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (--slab->live > 0) return;
        if (slab == current_) {
            slab->used = sizeof(Slab);
        } else {
            Unmap(slab);
        }
    }

    size_t bytes() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return bytes_;
    }

  private:
    static void* Take(Slab& slab, size_t needed) {
        auto* const header = new (reinterpret_cast<char*>(&slab) + slab.used) Header{&slab};
        slab.used += needed;
        ++slab.live;
        return header + 1;
    }

    void* AllocateAlone(size_t size) {
        size_t bytes = 0;
        if (__builtin_add_overflow(size, sizeof(Slab) + sizeof(Header), &bytes)) throw std::bad_alloc();
        Slab* const slab = MapSlab(bytes);
        const std::lock_guard<std::mutex> lock(mutex_);
        bytes_ += bytes;
        return Take(*slab, sizeof(Header) + size);
    }

    void Unmap(Slab* slab) {
        bytes_ -= slab->bytes;
        Platform::Unmap(slab, slab->bytes);
    }

    // A standard one: it may be taken under any other, and nothing is called under it.
    std::mutex mutex_;
    Slab* current_ = nullptr;
    size_t bytes_ = 0;
};

Slabs g_slabs;

}  // namespace

// The address sanitizer sees no use after free in slabs.
constexpr bool kUsesSlabs = !kHasAddressSanitizer;

void* AllocateInSlab(size_t size) {
    return kUsesSlabs ? g_slabs.Allocate(size) : ::operator new(size);
}

void FreeInSlab(void* block) noexcept {
    if (!kUsesSlabs) return ::operator delete(block);
    if (block) g_slabs.Free(block);
}

size_t SlabBytes() {
    return g_slabs.bytes();
}

}  // namespace KXP
