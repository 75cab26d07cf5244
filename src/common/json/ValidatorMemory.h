// Memory for RapidJSON's schema validator, which takes and frees several small blocks for each value that it
// checks. What it frees it gets again without a lock; a small message needs nothing from outside.
#pragma once

#include <array>
#include <cstddef>

namespace KXP {

// An allocator in RapidJSON's sense, for one validator and one thread. It outlives its blocks.
class ValidatorMemory {
  public:
    static const bool kNeedFree = true;

    ValidatorMemory() = default;
    ~ValidatorMemory();
    ValidatorMemory(const ValidatorMemory&) = delete;
    ValidatorMemory& operator=(const ValidatorMemory&) = delete;

    // Throws std::bad_alloc. Null for no bytes.
    void* Malloc(size_t size);
    void* Realloc(void* block, size_t oldSize, size_t size);
    static void Free(void* block) noexcept;

  private:
    // Before each block.
    struct alignas(std::max_align_t) Header {
        ValidatorMemory* owner;  // null for a large block
        Header* nextFreed = nullptr;
        size_t size = 0;  // an index of freed_
    };

    // Of 64 bytes and twice as much each time.
    static constexpr size_t kSizes = 6;
    static constexpr size_t kLeast = 64;
    static constexpr size_t kFirstBytes = 6144;

    Header* Fresh(size_t bytes);
    bool IsWithin(const Header* header) const;

    alignas(std::max_align_t) char first_[kFirstBytes];  // left unset
    size_t taken_ = 0;                                   // of those
    std::array<Header*, kSizes> freed_{};
};

}  // namespace KXP
