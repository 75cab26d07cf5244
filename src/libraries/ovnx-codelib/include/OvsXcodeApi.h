// libovnxcodelib: cuts videos. The records and the three entries, whose layout its callers rely on; it is
// opened at run time and never linked. Every entry may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovsxcodeapi {

// Text is in 32-bit characters and ends in a zero.
constexpr size_t kTextSize = 260;

struct InitParams {
    uint32_t version;  // 1
    uint32_t kind;     // 2
    wchar_t productDirectory[kTextSize];
};

struct RemuxBlock {
    uint32_t version;  // 1
    uint32_t reserved;
    uint64_t start;  // in units of 100 ns, as the end
    uint64_t end;
    wchar_t input[kTextSize];
    wchar_t output[kTextSize];
    uint32_t flags;  // of RemuxFlags
    uint32_t reservedToo;
};

struct RemuxParams {
    uint32_t version;    // 1
    uint32_t kind;       // 1
    uint64_t blockSize;  // 2112
    RemuxBlock* block;
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
    RemuxAtKeyframe =
        1,  // the clip starts at the keyframe before the start, with nothing hidden in front of it
};

// What OvsXcodeRemux gives beside 0 and the values of OvnxMediaStatus.
enum RemuxStatus : int32_t {
    RemuxBadRecord = -20,
    RemuxSameFile = -21,        // the output is the input
    RemuxNoMediaLibrary = -22,  // the library with the codecs is not there, or not open
};

}  // namespace ovsxcodeapi

extern "C" {

// Opens what the others need; 0 or RemuxNoMediaLibrary.
__attribute__((visibility("default"))) int32_t InitializeTranscoder(ovsxcodeapi::InitParams* params);

// Writes the part of the input between the two times to the output; times behind the end mean the end. The
// output appears whole and durable, in the place of an older regular file, or not at all. 0, or a negative
// value and a line in the log.
__attribute__((visibility("default"))) int32_t OvsXcodeRemux(ovsxcodeapi::RemuxParams& params);

// Lets go of what InitializeTranscoder has opened; calls that are on their way keep it until they end.
__attribute__((visibility("default"))) int32_t ShutdownTranscoder();
}
