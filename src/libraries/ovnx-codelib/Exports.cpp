#include <atomic>
#include <exception>

#include "base/Places.h"
#include "libraries/ovnx-codelib/Trim.h"

namespace {

std::atomic<bool> g_initialized{false};

// Opens the library in the same folder as this one, at the first cut: it brings a hundred libraries of
// codecs. It stays open, because calls in progress may use it. After a failure the next call tries again.
const ovnxmedia::MediaLibrary& OpenMedia() {
    static const ovnxmedia::MediaLibrary media(KXP::GetLibraryPath());
    return media;
}

}  // namespace

int32_t InitializeTranscoder(ovsxcodeapi::InitParams*) {
    g_initialized = true;
    return ovsxcodeapi::RemuxOk;
}

int32_t OvsXcodeRemux(ovsxcodeapi::RemuxParams& params) {
    if (!g_initialized) return ovsxcodeapi::RemuxNoMediaLibrary;
    try {
        return codelib::Trim(OpenMedia(), params);
    } catch (const std::exception&) {
        return ovsxcodeapi::RemuxNoMediaLibrary;
    }
}

int32_t ShutdownTranscoder() {
    g_initialized = false;
    return ovsxcodeapi::RemuxOk;
}
