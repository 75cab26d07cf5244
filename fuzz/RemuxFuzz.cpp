#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "libraries/ovnx-media/cut/Remux.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using File = std::unique_ptr<FILE, int (*)(FILE*)>;
    const File file(std::tmpfile(), std::fclose);
    if (!file || std::fwrite(data, 1, size, file.get()) != size || std::fflush(file.get()) != 0) std::abort();
    for (const bool atKeyframe : {false, true}) {
        const File clip(std::tmpfile(), std::fclose);
        if (!clip) std::abort();
        try {
            ovnxmedia::Remux(fileno(file.get()), fileno(clip.get()), {500000, 1500000, atKeyframe},
                             ovnxmedia::Budget(std::chrono::seconds(5)));
        } catch (const ovnxmedia::Failure&) {
        }
    }
    return 0;
}
