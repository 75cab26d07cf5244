#include "plugin-modules/Gallery/src/media/PngWalk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::ByteCursor cursor(source);
    media::SniffResult result;
    media::WalkPng(cursor, result);
    return 0;
}
