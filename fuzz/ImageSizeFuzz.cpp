#include <cstdlib>

#include "plugin-modules/Gallery/src/media/ImageSize.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::ImageSize found;
    const bool told = media::ReadImageSize(source, found);
    const auto isSide = [](unsigned int pixels) { return pixels > 0 && pixels <= INT32_MAX; };
    // What is found must fit the integers of a response.
    if (told && !(isSide(found.width) && isSide(found.height))) std::abort();
    return 0;
}
