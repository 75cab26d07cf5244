#include "plugin-modules/Gallery/src/media/Mp4Walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::ByteCursor cursor(source);
    media::SniffResult result;
    media::WalkMp4(cursor, result);
    return 0;
}
