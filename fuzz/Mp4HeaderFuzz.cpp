#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::Mp4HeaderInfo info;
    for (const bool wantSize : {false, true})
        media::ReadMp4Header(source, wantSize, info);
    return 0;
}
