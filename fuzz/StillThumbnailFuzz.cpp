// All readers of still pictures: the first bytes select one.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "libraries/ovnx-media/PngWriter.h"
#include "libraries/ovnx-media/Still.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), std::fclose);
    if (!file || std::fwrite(data, 1, size, file.get()) != size || std::fflush(file.get()) != 0) std::abort();
    try {
        using namespace ovnxmedia;
        const Picture picture = DecodeStill(fileno(file.get()), {24, 24}, Budget());
        if (picture.size.width > 24 || picture.size.height > 24) std::abort();
        if (WritePng(picture, OVNX_MEDIA_MAX_ALLOCATION).empty()) std::abort();
    } catch (const ovnxmedia::Failure& failure) {  // all that may come out
        if (!*failure.what()) std::abort();
    }
    return 0;
}
