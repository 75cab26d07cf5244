// The calls of libovnxcodelib, which cuts videos without decoding them, and the records that they take. Their
// layout is the library's; it has a copy of these declarations of its own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovsxcodeapi {

// Wide text has 32 bits a character and ends in a zero.
constexpr size_t kMaxPath = 260;

struct InitParams {
    uint32_t version = 1;
    uint32_t kind = 2;
    wchar_t productFolder[kMaxPath] = {};
};

struct RemuxBlock {
    uint32_t version = 1;
    uint32_t reserved = 0;
    uint64_t start = 0;  // in units of 100 ns, like the end
    uint64_t end = 0;
    wchar_t input[kMaxPath] = {};
    wchar_t output[kMaxPath] = {};
    uint32_t flags = 0;  // kStartOnKeyframe
    uint32_t reservedToo = 0;
};

// Begin on the keyframe itself, without hiding what comes before the start.
constexpr uint32_t kStartOnKeyframe = 1;

struct RemuxParams {
    uint32_t version = 1;
    uint32_t kind = 1;
    uint64_t blockSize = sizeof(RemuxBlock);
    RemuxBlock* block = nullptr;
};

static_assert(sizeof(wchar_t) == 4);
static_assert(sizeof(InitParams) == 1048 && offsetof(InitParams, productFolder) == 8);
static_assert(sizeof(RemuxBlock) == 2112 && offsetof(RemuxBlock, start) == 8 &&
              offsetof(RemuxBlock, end) == 16);
static_assert(offsetof(RemuxBlock, input) == 24 && offsetof(RemuxBlock, output) == 1064);
static_assert(offsetof(RemuxBlock, flags) == 2104);
static_assert(sizeof(RemuxParams) == 24 && offsetof(RemuxParams, blockSize) == 8 &&
              offsetof(RemuxParams, block) == 16);

using InitializeTranscoderFn = int32_t (*)(InitParams*);
using ShutdownTranscoderFn = int32_t (*)();
using OvsXcodeRemuxFn = int32_t (*)(RemuxParams&);

}  // namespace ovsxcodeapi
