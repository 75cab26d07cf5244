// The text of a settings file: read, written in the layout of today, and read again.
#include <cstdint>
#include <cstdlib>

#include "common/json/JsonParse.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    KXP::Document document;
    if (KXP::ParseJSON({reinterpret_cast<const char*>(data), size}, document).IsError()) return 0;
    StoredSettings stored;
    bool oldLayout = false;
    if (!ReadStoredSettings(document, stored, oldLayout)) return 0;
    KXP::Document written;
    WriteStoredSettings(stored, written);
    StoredSettings again;
    if (!ReadStoredSettings(written, again, oldLayout) || oldLayout ||
        again.capEnabled != stored.capEnabled || again.maxSizePercent != stored.maxSizePercent ||
        again.userGalleryPath != stored.userGalleryPath || again.tempFolder != stored.tempFolder ||
        again.trackerUpdateState != stored.trackerUpdateState)
        std::abort();
    return 0;
}
