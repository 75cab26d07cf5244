// All readers of still pictures: the first bytes select one.
#include <cstdlib>

#include "fuzz/MemoryFile.h"
#include "libraries/ovnx-media/PngWriter.h"
#include "libraries/ovnx-media/Still.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    try {
        using namespace ovnxmedia;
        const Picture picture = DecodeStill(file.fd(), {24, 24}, Budget());
        if (picture.size.width > 24 || picture.size.height > 24) std::abort();
        if (WritePng(picture, OVNX_MEDIA_MAX_ALLOCATION).size == 0) std::abort();
    } catch (const ovnxmedia::Failure& failure) {  // all that may come out
        if (!*failure.what()) std::abort();
    }
    return 0;
}
