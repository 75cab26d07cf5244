#include "plugin-modules/Gallery/src/thumbnails/Thumbnailer.h"

#include <array>
#include <chrono>
#include <memory>

#include <sys/stat.h>

#include "common/Base64.h"
#include "common/FileDescriptor.h"

namespace {

constexpr unsigned kMaxAtOnce = 2;
// How soon a request that waits for its turn notices that it is cancelled.
constexpr std::chrono::milliseconds kLook{50};

int IsCancelled(void* context) {
    return *static_cast<const std::atomic<bool>*>(context) ? 1 : 0;
}

void FillKey(const struct stat& status, ThumbnailCache::Key& key) {
    key.size = static_cast<uint64_t>(status.st_size);
    key.time = static_cast<int64_t>(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

}  // namespace

Thumbnailer::Slot::Slot(Thumbnailer& owner, const std::atomic<bool>& cancelled) : owner_(owner) {
    const KXP::MutexLock lock(owner_.mutex_);
    while (owner_.busy_ >= kMaxAtOnce && !cancelled)
        owner_.slotFree_.WaitUntil(owner_.mutex_, std::chrono::steady_clock::now() + kLook);
    if (cancelled) return;
    ++owner_.busy_;
    taken_ = true;
}

Thumbnailer::Slot::~Slot() {
    if (!taken_) return;
    {
        const KXP::MutexLock lock(owner_.mutex_);
        --owner_.busy_;
    }
    owner_.slotFree_.NotifyAll();
}

ThumbnailCache::Text Thumbnailer::Make(const std::string& path, uint32_t width, uint32_t height,
                                       const std::atomic<bool>& cancelled, std::string& error) {
    ThumbnailCache::Key key{path, 0, 0, width, height};
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        FillKey(status, key);
        if (ThumbnailCache::Text text = cache_.Find(key)) return text;
    }
    const MediaModule* const media = MediaModule::Get();
    if (!media) {
        error = "there is no media module";
        return nullptr;
    }
    // Files are opened by whose turn it is alone, however many wait.
    const Slot slot(*this, cancelled);
    if (!slot.taken()) {
        error = "cancelled";
        return nullptr;
    }
    const KXP::FileDescriptor file = KXP::OpenForRead(path);
    if (!file.IsOpen() || fstat(file.get(), &status) != 0) {
        error = "it cannot be opened";
        return nullptr;
    }
    FillKey(status, key);
    // Somebody else may have waited for the same.
    ThumbnailCache::Text text = cache_.Find(key);
    if (text) return text;
    text = Decode(*media, file.get(), key, cancelled, error);
    if (text) cache_.Put(key, text);
    return text;
}

ThumbnailCache::Text Thumbnailer::Decode(const MediaModule& media, int file, const ThumbnailCache::Key& key,
                                         const std::atomic<bool>& cancelled, std::string& error) {
    std::array<char, 256> message{};
    OvnxMediaRequest request{};
    request.width = key.width;
    request.height = key.height;
    request.stop = &IsCancelled;
    request.context = const_cast<std::atomic<bool>*>(&cancelled);
    request.message = message.data();
    request.messageSize = message.size();
    const bool isVideo = media.probe(file) == OVNX_MEDIA_KIND_VIDEO;
    OvnxMediaPicture picture{};
    const int32_t status = (isVideo ? media.videoFrame : media.stillThumbnail)(file, &request, &picture);
    if (status != OVNX_MEDIA_OK) {
        error = message.data();
        return nullptr;
    }
    const std::unique_ptr<OvnxMediaPicture, decltype(media.release)> owner(&picture, media.release);
    return std::make_shared<const std::string>(
        "data:image/png;base64," +
        KXP::EncodeBase64({reinterpret_cast<const char*>(picture.bytes), picture.size}));
}
