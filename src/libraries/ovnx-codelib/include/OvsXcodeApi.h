// libovnxcodelib, which cuts videos without decoding them: its three entries and the records that they take,
// whose layout is fixed. Callers open the library at run time and never link it; they, too, include this
// header. Every entry may be called from any thread. The library does not log: a failure is a value.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovsxcodeapi {

// Text has 32-bit characters and a terminating zero.
constexpr size_t kTextSize = 260;

struct InitParams {
    uint32_t version = 1;
    uint32_t kind = 2;
    wchar_t productDirectory[kTextSize] = {};
};

struct RemuxBlock {
    uint32_t version = 1;
    uint32_t reserved = 0;
    uint64_t start = 0;  // in units of 100 ns, as the end
    uint64_t end = 0;
    wchar_t input[kTextSize] = {};
    wchar_t output[kTextSize] = {};
    uint32_t flags = 0;  // of RemuxFlags
    uint32_t leftOut =
        0;  // filled on success: how many tracks have nothing in the part, and are not in the clip
};

struct RemuxParams {
    uint32_t version = 1;
    uint32_t kind = 1;
    uint64_t blockSize = sizeof(RemuxBlock);
    RemuxBlock* block = nullptr;
};

static_assert(sizeof(wchar_t) == 4);
static_assert(sizeof(InitParams) == 1048 && offsetof(InitParams, productDirectory) == 8);
static_assert(sizeof(RemuxBlock) == 2112);
static_assert(offsetof(RemuxBlock, start) == 8 && offsetof(RemuxBlock, end) == 16);
static_assert(offsetof(RemuxBlock, input) == 24 && offsetof(RemuxBlock, output) == 1064);
static_assert(offsetof(RemuxBlock, flags) == 2104);
static_assert(sizeof(RemuxParams) == 24);
static_assert(offsetof(RemuxParams, blockSize) == 8 && offsetof(RemuxParams, block) == 16);

enum RemuxFlags : uint32_t {
    RemuxAtKeyframe = 1,  // start at the keyframe before `start`, with nothing hidden before it
};

enum RemuxStatus : int32_t {
    RemuxOk = 0,
    RemuxUnknownFormat = -1,
    RemuxDamaged = -2,
    RemuxOverLimit = -3,  // too many tracks or samples, or too much time
    RemuxUnreadable = -5,
    RemuxNoMemory = -6,
    RemuxEmptyRange = -7,
    RemuxNoVideo = -8,
    RemuxUnwritable = -10,
    RemuxUnfaithful = -11,  // the clip was written and does not have what it should have of its source
    RemuxBadRecord = -20,
    RemuxSameFile = -21,        // the output is the input
    RemuxNoMediaLibrary = -22,  // the library with the codecs is missing or not open
};

}  // namespace ovsxcodeapi

extern "C" {

// Allows cuts until ShutdownTranscoder. Returns RemuxOk.
__attribute__((visibility("default"))) int32_t InitializeTranscoder(ovsxcodeapi::InitParams* params);

// Writes the part of the input between the two times to the output; a time after the end of the video means
// its end. The output appears whole and durable, replacing an older regular file, or not at all. The first
// cut opens the library with the codecs, which stays open. Returns a RemuxStatus.
__attribute__((visibility("default"))) int32_t OvsXcodeRemux(ovsxcodeapi::RemuxParams& params);

// Refuses later cuts with RemuxNoMediaLibrary; those in progress go on. Returns RemuxOk.
__attribute__((visibility("default"))) int32_t ShutdownTranscoder();
}
