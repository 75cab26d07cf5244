#include <exception>
#include <memory>

#include "CobalixUtil.h"
#include "common/Mutex.h"
#include "libraries/ovnx-codelib/Trim.h"

namespace {

KXP::Mutex g_mutex;
// Held by each call on its way, so that what it runs in stays.
std::shared_ptr<const codelib::MediaLibrary> g_media GUARDED_BY(g_mutex);

std::shared_ptr<const codelib::MediaLibrary> Media() {
    KXP::MutexLock lock(g_mutex);
    return g_media;
}

void SetMedia(std::shared_ptr<const codelib::MediaLibrary> media) {
    KXP::MutexLock lock(g_mutex);
    g_media.swap(media);
}

}  // namespace

int32_t InitializeTranscoder(ovsxcodeapi::InitParams*) {
    try {
        SetMedia(std::make_shared<const codelib::MediaLibrary>());
        return 0;
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "cannot open the library with the codecs: %s", error.what());
        return ovsxcodeapi::RemuxNoMediaLibrary;
    }
}

int32_t OvsXcodeRemux(ovsxcodeapi::RemuxParams& params) {
    const std::shared_ptr<const codelib::MediaLibrary> media = Media();
    if (media) return codelib::Trim(*media, params);
    KXP_LOG(KXP::LogFailure, "cannot cut without the library with the codecs");
    return ovsxcodeapi::RemuxNoMediaLibrary;
}

int32_t ShutdownTranscoder() {
    SetMedia(nullptr);
    return 0;
}
