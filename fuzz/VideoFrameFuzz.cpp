#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "libraries/ovnx-media/Keyframes.h"
#include "libraries/ovnx-media/VideoFrame.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), std::fclose);
    if (!file || std::fwrite(data, 1, size, file.get()) != size || std::fflush(file.get()) != 0) std::abort();
    try {
        ovnxmedia::DecodeVideoFrame(fileno(file.get()), {64, 64}, ovnxmedia::Budget(std::chrono::seconds(5)));
    } catch (const ovnxmedia::Failure&) {
    }
    try {
        ovnxmedia::ReadKeyframes(fileno(file.get()), 1000, ovnxmedia::Budget(std::chrono::seconds(5)));
    } catch (const ovnxmedia::Failure&) {
    }
    return 0;
}
