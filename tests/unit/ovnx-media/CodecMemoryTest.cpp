#include <algorithm>
#include <cstdlib>
#include <string_view>

#include <gtest/gtest.h>

#include "base/SlabMemory.h"
#include "libraries/ovnx-media/CodecMemory.h"

namespace {

// The functions of the codecs are this program's own.
constexpr size_t kSizes[] = {1, 100, 32 << 10, 300 << 10, 5 << 20, 64, 2 << 20, (2 << 20) + 1, 400 << 10, 0};

TEST(CodecMemory, BlocksKeepTheirBytesFromTheHeapToMappingsAndBack) {
    const auto resize = [](auto* block, size_t from, size_t to, auto function) {
        auto* const moved = static_cast<char*>(function(block, to));
        const std::string_view kept(moved, moved ? std::min(from, to) : 0);
        EXPECT_EQ(kept.find_first_not_of('x'), std::string_view::npos) << from << " to " << to;
        std::fill_n(moved, to, 'x');
        return moved;
    };
    char* ofCodecs = nullptr;
    char* large = nullptr;
    size_t from = 0;
    for (const size_t to : kSizes) {
        ofCodecs = resize(ofCodecs, from, to, realloc);
        large = resize(large, from, to, KXP::ResizeInSlab);
        from = to;
    }
    EXPECT_EQ(ofCodecs, nullptr);
    KXP::FreeInSlab(large);
    EXPECT_THROW((void)KXP::AllocateInSlab(SIZE_MAX - 8), std::bad_alloc);
}

TEST(CodecMemory, WhatIsUsedAgainIsZeroedForThoseWhoCountOnIt) {
    const ovnxmedia::CodecMemoryUse use(ovnxmedia::CodecMemoryUse::kForPictures);
    void* aligned = nullptr;
    ASSERT_EQ(posix_memalign(&aligned, 64, 3 << 20), 0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(aligned) % 64, 0U);
    std::fill_n(static_cast<char*>(aligned), 3 << 20, 'x');
    free(aligned);
    auto* const zeros = static_cast<char*>(calloc(3 << 10, 1000));
    EXPECT_EQ(std::string_view(zeros, 3000 << 10).find_first_not_of('\0'), std::string_view::npos);
    free(zeros);
}

}  // namespace
