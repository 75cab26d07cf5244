#include <cstring>
#include <deque>
#include <thread>

#include <gtest/gtest.h>

#include "base/SlabMemory.h"

namespace {

// Slabs, and two blocks of addresses for large ones.
constexpr size_t kSpare = (size_t{1} << 20) + (size_t{512} << 10);

// Of a size that its number decides, filled with that number.
struct Block {
    explicit Block(size_t itsNumber)
        : number(itsNumber),
          size(number % 100 == 0 ? 100000 + number * 50 : number * 37 % 2000),
          bytes(static_cast<char*>(KXP::AllocateInSlab(size))) {
        std::memset(bytes, static_cast<char>(number), size);
    }
    // Whether nobody else has written into it.
    bool IsWhole() const {
        for (size_t i = 0; i < size; ++i)
            if (bytes[i] != static_cast<char>(number)) return false;
        return reinterpret_cast<uintptr_t>(bytes) % alignof(std::max_align_t) == 0;
    }

    size_t number;
    size_t size;
    char* bytes;
};

}  // namespace

TEST(SlabMemory, ABurstGoesBackWhateverStays) {
    char* const kept = static_cast<char*>(KXP::AllocateInSlab(8));
    const size_t before = KXP::SlabBytes();
    const auto burst = [] {
        std::deque<Block> blocks;
        for (size_t number = 0; number < 5000; ++number) {
            blocks.emplace_back(number);
            if (number % 3 != 0) continue;
            EXPECT_TRUE(blocks.front().IsWhole());
            KXP::FreeInSlab(blocks.front().bytes);
            blocks.pop_front();
        }
        for (const Block& block : blocks) {
            EXPECT_TRUE(block.IsWhole());
            KXP::FreeInSlab(block.bytes);
        }
    };
    std::thread other(burst);
    burst();
    other.join();
    EXPECT_LE(KXP::SlabBytes(), before + kSpare);
    KXP::FreeInSlab(kept);
#ifndef GALLERY_SANITIZED  // which would end the process
    EXPECT_THROW(KXP::AllocateInSlab(SIZE_MAX - 8), std::bad_alloc);
#endif
}

TEST(SlabMemory, WhatABurstLeavesFreeBetweenBlocksIsUsedFirst) {
    constexpr size_t kBlocks = 20000;
    std::deque<void*> blocks;
    const auto allocate = [&](size_t count) {
        for (size_t i = 0; i < count; ++i)
            blocks.push_back(KXP::AllocateInSlab(100));
    };
    allocate(kBlocks);
    const size_t most = KXP::SlabBytes();
    for (size_t i = 0; i < kBlocks; ++i) {
        if (i % 100 == 0) {
            blocks.push_back(blocks.front());
        } else {
            KXP::FreeInSlab(blocks.front());
        }
        blocks.pop_front();
    }
    allocate(kBlocks - blocks.size());
    EXPECT_EQ(KXP::SlabBytes(), most);
    for (void* const block : blocks)
        KXP::FreeInSlab(block);
    EXPECT_LE(KXP::SlabBytes(), kSpare);
}
