#include "plugin-modules/Gallery/src/media/JpegWalk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    media::MemorySource source({reinterpret_cast<const char*>(data), size});
    media::ByteCursor cursor(source);
    media::SniffResult result;
    media::WalkJpeg(cursor, result);
    // The walk gets here only for a signed file.
    cursor.Rewind();
    media::JpegSizeIsValid(cursor);
    return 0;
}
