#include "base/SlabMemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "base/Mapping.h"
#include "base/Sanitizers.h"

namespace KXP {
namespace {

constexpr size_t kSlabBytes = size_t{64} << 10;
// The addresses of each large block that needs no more, a room: the text of an answer grows in place, where
// each move would interrupt the other processors. Memory is taken only as it is written to.
constexpr size_t kRoomBytes = size_t{256} << 10;
// Slabs and rooms without a block that are kept for the next burst.
constexpr uint32_t kMaxSpareSlabs = 16;
constexpr uint32_t kMaxSpareRooms = 2;

struct Header;

// Equal blocks in one piece of memory, or a single block that is too large for that.
struct alignas(std::max_align_t) Slab {
    size_t bytes = kSlabBytes;
    bool isMapped = true;  // else of the heap
    uint32_t size = 0;     // an index of kSizes
    uint32_t fresh = 0;    // blocks that were handed out at least once
    uint32_t live = 0;
    Header* freed = nullptr;
    Slab* previous = nullptr;
    Slab* next = nullptr;
};

// Before each block.
struct alignas(std::max_align_t) Header {
    Slab* slab;
    Header* nextFreed;
};

struct Size {
    uint32_t blocks;  // of a slab
    size_t bytes;     // of one, with its header
};

template <size_t kCount>
constexpr std::array<Size, kCount> MakeSizes(const std::array<uint32_t, kCount>& blocks) {
    constexpr size_t kAlignment = alignof(std::max_align_t);
    std::array<Size, kCount> sizes{};
    for (size_t i = 0; i < kCount; ++i)
        sizes[i] = {blocks[i], (kSlabBytes - sizeof(Slab)) / blocks[i] / kAlignment * kAlignment};
    return sizes;
}

// By steps of a quarter at most, up to half of a slab.
constexpr auto kSizes = MakeSizes(std::array<uint32_t, 35>{
    1363, 1022, 818, 681, 584, 511, 409, 340, 292, 255, 204, 170, 146, 127, 102, 85, 73, 63,
    51,   42,   36,  31,  25,  21,  18,  15,  12,  10,  8,   7,   6,   5,   4,   3,  2});
constexpr uint32_t kAlone = kSizes.size();

// kAlone for a block that gets its own memory. `needed` has the header.
uint32_t SizeFor(size_t needed) {
    // The address sanitizer sees no use after free in slabs.
    if constexpr (kHasAddressSanitizer) return kAlone;
    const auto* const found = std::lower_bound(kSizes.begin(), kSizes.end(), needed,
                                               [](const Size& of, size_t bytes) { return of.bytes < bytes; });
    return static_cast<uint32_t>(found - kSizes.begin());
}

std::atomic<size_t> g_bytes{0};

// Throws std::bad_alloc. The number of mappings is limited, too.
Slab* MakeSlab(size_t bytes) {
    void* const mapping = kHasAddressSanitizer ? nullptr : Platform::Map(bytes);
    void* const place = mapping ? mapping : std::malloc(bytes);
    if (!place) throw std::bad_alloc();
    auto* const slab = new (place) Slab;
    slab->bytes = bytes;
    slab->isMapped = mapping != nullptr;
    g_bytes += bytes;
    return slab;
}

void Release(Slab* slab) noexcept {
    g_bytes -= slab->bytes;
    if (slab->isMapped) {
        Platform::Unmap(slab, slab->bytes);
    } else {
        std::free(slab);
    }
}

// Pieces without a block, all of the same size.
class Spares {
  public:
    explicit Spares(uint32_t most) : most_(most) {}
    // Null when there is none.
    Slab* Take() {
        Slab* const slab = first_;
        if (!slab) return nullptr;
        first_ = slab->next;
        --count_;
        return slab;
    }
    // False when there are enough.
    bool Keep(Slab* slab) {
        if (count_ == most_) return false;
        slab->next = first_;
        first_ = slab;
        ++count_;
        return true;
    }
    // No more is kept.
    void Close() {
        while (Slab* const slab = Take())
            Release(slab);
        most_ = 0;
    }

  private:
    uint32_t most_;
    Slab* first_ = nullptr;
    uint32_t count_ = 0;
};

class SlabList {
  public:
    Slab* first() const { return first_; }
    // New ones come last, so that the first fill up and the last become empty.
    void Append(Slab* slab) {
        slab->previous = last_;
        slab->next = nullptr;
        (last_ ? last_->next : first_) = slab;
        last_ = slab;
    }
    void Remove(Slab* slab) {
        (slab->previous ? slab->previous->next : first_) = slab->next;
        (slab->next ? slab->next->previous : last_) = slab->previous;
    }

  private:
    Slab* first_ = nullptr;
    Slab* last_ = nullptr;
};

// Held for some nanoseconds at a time. Who finds it taken looks again before it sleeps, which costs
// thousands.
class BriefMutex {
  public:
    void lock() {
        for (int look = 0; look < kLooks; ++look)
            if (mutex_.try_lock()) return;
        mutex_.lock();
    }
    void unlock() { mutex_.unlock(); }

  private:
    static constexpr int kLooks = 100;
    // A standard one: it may be taken under any other, and nothing is called under it but the system.
    std::mutex mutex_;
};

class Slabs {
  public:
    // What is in use then is in use by a thread that was abandoned.
    ~Slabs() {
        const std::lock_guard<BriefMutex> lock(mutex_);
        spareSlabs_.Close();
        spareRooms_.Close();
    }

    Header* Allocate(uint32_t size) {
        const std::lock_guard<BriefMutex> lock(mutex_);
        SlabList& slabs = withRoom_[size];
        if (!slabs.first()) slabs.Append(Begin(size));
        Slab* const slab = slabs.first();
        Header* const header = slab->freed ? slab->freed : Fresh(*slab);
        slab->freed = header->nextFreed;
        if (++slab->live == kSizes[size].blocks) slabs.Remove(slab);
        return header;
    }

    void Free(Header* header) noexcept {
        const std::lock_guard<BriefMutex> lock(mutex_);
        Slab* const slab = header->slab;
        header->nextFreed = slab->freed;
        slab->freed = header;
        SlabList& slabs = withRoom_[slab->size];
        if (slab->live-- == kSizes[slab->size].blocks) slabs.Append(slab);
        if (slab->live > 0) return;
        slabs.Remove(slab);
        if (!spareSlabs_.Keep(slab)) Release(slab);
    }

    Slab* TakeRoom() {
        const std::lock_guard<BriefMutex> lock(mutex_);
        return spareRooms_.Take();
    }
    bool KeepRoom(Slab* room) noexcept {
        const std::lock_guard<BriefMutex> lock(mutex_);
        return spareRooms_.Keep(room);
    }

  private:
    // With no block in use.
    Slab* Begin(uint32_t size) {
        Slab* const spare = spareSlabs_.Take();
        Slab* const slab = spare ? spare : MakeSlab(kSlabBytes);
        slab->size = size;
        slab->fresh = 0;
        slab->freed = nullptr;
        return slab;
    }

    static Header* Fresh(Slab& slab) {
        char* const blocks = reinterpret_cast<char*>(&slab + 1);
        return new (blocks + kSizes[slab.size].bytes * slab.fresh++) Header{&slab, nullptr};
    }

    BriefMutex mutex_;
    std::array<SlabList, kSizes.size()> withRoom_;
    Spares spareSlabs_{kMaxSpareSlabs};
    Spares spareRooms_{kMaxSpareRooms};
};

Slabs g_slabs;

constexpr size_t kAloneHeaders = sizeof(Slab) + sizeof(Header);

// A room, or whole pages.
size_t AloneBytes(size_t size) {
    constexpr size_t kPage = size_t{4} << 10;
    const size_t needed = kAloneHeaders + size;
    if constexpr (kHasAddressSanitizer) return needed;
    return needed <= kRoomBytes ? kRoomBytes : (needed + kPage - 1) / kPage * kPage;
}

void* FinishAlone(Slab* slab) {
    slab->size = kAlone;
    return new (slab + 1) Header{slab, nullptr} + 1;
}

void* AllocateAlone(size_t size) {
    const size_t bytes = AloneBytes(size);
    Slab* const spare = bytes == kRoomBytes ? g_slabs.TakeRoom() : nullptr;
    return FinishAlone(spare ? spare : MakeSlab(bytes));
}

Header* HeaderOf(void* block) {
    return static_cast<Header*>(block) - 1;
}

size_t Capacity(const Slab& slab) {
    return slab.size == kAlone ? slab.bytes - kAloneHeaders : kSizes[slab.size].bytes - sizeof(Header);
}

void CheckSize(size_t size) {
    if (size > SIZE_MAX / 2) throw std::bad_alloc();
}

void* ResizeMapped(Slab* slab, size_t size) {
    const size_t before = slab->bytes;
    const size_t bytes = AloneBytes(size);
    if (bytes == before) return FinishAlone(slab);
    void* const place = Platform::ResizeMapping(slab, before, bytes);
    if (!place) throw std::bad_alloc();
    auto* const moved = static_cast<Slab*>(place);
    moved->bytes = bytes;
    g_bytes += bytes - before;
    return FinishAlone(moved);
}

}  // namespace

void* AllocateInSlab(size_t size) {
    CheckSize(size);
    const uint32_t sizeClass = SizeFor(sizeof(Header) + size);
    return sizeClass == kAlone ? AllocateAlone(size) : g_slabs.Allocate(sizeClass) + 1;
}

void* ResizeInSlab(void* block, size_t size) {
    if (!block) return AllocateInSlab(size);
    CheckSize(size);
    Slab* const slab = HeaderOf(block)->slab;
    const uint32_t sizeClass = SizeFor(sizeof(Header) + size);
    if (sizeClass == slab->size) {
        if (sizeClass != kAlone) return block;
        // The thread sanitizer does not learn that a mapping has moved, and takes the next one there for it.
        if (slab->isMapped && !kHasThreadSanitizer) return ResizeMapped(slab, size);
    }
    void* const moved = AllocateInSlab(size);
    std::memcpy(moved, block, std::min(Capacity(*slab), size));
    FreeInSlab(block);
    return moved;
}

void FreeInSlab(void* block) noexcept {
    if (!block) return;
    Header* const header = HeaderOf(block);
    Slab* const slab = header->slab;
    if (slab->size != kAlone) return g_slabs.Free(header);
    const bool isRoom = slab->isMapped && slab->bytes == kRoomBytes;
    if (!isRoom || !g_slabs.KeepRoom(slab)) Release(slab);
}

size_t SlabBytes() {
    return g_bytes;
}

}  // namespace KXP
