#include <chrono>

#include "fuzz/MemoryFile.h"
#include "libraries/ovnx-media/Keyframes.h"
#include "libraries/ovnx-media/VideoFrame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    try {
        ovnxmedia::DecodeVideoFrame(file.fd(), {64, 64}, ovnxmedia::Budget(std::chrono::seconds(5)));
    } catch (const ovnxmedia::Failure&) {
    }
    try {
        ovnxmedia::ReadKeyframes(file.fd(), 1000, ovnxmedia::Budget(std::chrono::seconds(5)));
    } catch (const ovnxmedia::Failure&) {
    }
    return 0;
}
