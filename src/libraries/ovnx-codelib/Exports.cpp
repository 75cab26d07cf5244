#include <atomic>
#include <exception>

#include "base/Places.h"
#include "libraries/ovnx-codelib/Trim.h"

namespace {

// Null while the library is not initialized. What it points to stays: calls in progress may use it.
std::atomic<const ovnxmedia::MediaLibrary*> g_media{nullptr};

// Opens the library in the same folder as this one. After a failure the next call tries again.
const ovnxmedia::MediaLibrary& OpenMedia() {
    static const ovnxmedia::MediaLibrary media(KXP::GetLibraryPath());
    return media;
}

}  // namespace

int32_t InitializeTranscoder(ovsxcodeapi::InitParams*) {
    try {
        g_media = &OpenMedia();
        return ovsxcodeapi::RemuxOk;
    } catch (const std::exception&) {
        return ovsxcodeapi::RemuxNoMediaLibrary;
    }
}

int32_t OvsXcodeRemux(ovsxcodeapi::RemuxParams& params) {
    const ovnxmedia::MediaLibrary* const media = g_media;
    return media ? codelib::Trim(*media, params) : ovsxcodeapi::RemuxNoMediaLibrary;
}

int32_t ShutdownTranscoder() {
    g_media = nullptr;
    return ovsxcodeapi::RemuxOk;
}
