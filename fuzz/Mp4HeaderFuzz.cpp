#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = [] {
        KXP::LogInit(
            KXP::LocalApp, [](const char*, void*) {}, nullptr);
        return true;
    }();
    (void)quiet;
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::Mp4HeaderInfo info;
    for (const bool wantSize : {false, true})
        media::ReadMp4Header(source, wantSize, info);
    return 0;
}
