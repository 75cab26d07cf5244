#include <chrono>

#include "fuzz/MemoryFile.h"
#include "libraries/ovnx-media/cut/Remux.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    static MemoryFile clip;
    file.Set(data, size);
    for (const bool atKeyframe : {false, true}) {
        clip.Set(data, 0);
        try {
            ovnxmedia::Remux(file.fd(), clip.fd(), {500000, 1500000, atKeyframe},
                             ovnxmedia::Budget(std::chrono::seconds(5)));
        } catch (const ovnxmedia::Failure&) {
        }
    }
    return 0;
}
