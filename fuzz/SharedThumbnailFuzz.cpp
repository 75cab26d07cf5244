// The texts of a file manager's thumbnail, and then its pixels.
#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "libraries/ovnx-media/SharedThumbnail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.Set(data, size);
    try {
        using namespace ovnxmedia;
        const Picture picture = DecodeShared(file.fd(), {"file:///a", 1, 2}, {24, 24}, Budget());
        plain::Demand(picture.size.width <= 24 && picture.size.height <= 24);
    } catch (const ovnxmedia::Failure& failure) {  // all that may come out
        plain::Demand(*failure.what() != '\0');
    }
    return 0;
}
