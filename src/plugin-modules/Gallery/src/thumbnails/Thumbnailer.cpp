#include "plugin-modules/Gallery/src/thumbnails/Thumbnailer.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <string_view>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "common/product/Profile.h"
#include "common/text/Base64.h"

namespace {

std::unique_ptr<const ovnxmedia::MediaLibrary> OpenOrLog() {
    try {
        return std::make_unique<const ovnxmedia::MediaLibrary>(KXP::GetPluginBinaryDirectory() +
                                                               "/Contents/Frameworks/dependencies");
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "No thumbnails: %s", error.what());
        return nullptr;
    }
}

// Opened when it is first needed. Null, and logged that first time, when it cannot be.
const ovnxmedia::MediaLibrary* Media() {
    static const std::unique_ptr<const ovnxmedia::MediaLibrary> media = OpenOrLog();
    return media.get();
}

void FillKey(const struct stat& status, ThumbnailCache::Key& key) {
    key.size = static_cast<uint64_t>(status.st_size);
    key.time = KXP::Platform::ModifiedNs(status);
}

bool IsStill(const KXP::FileDescriptor& file, const ThumbnailCache::Key& key) {
    struct stat status {};
    ThumbnailCache::Key current = key;
    if (fstat(file.get(), &status) != 0) return false;
    FillKey(status, current);
    return current.size == key.size && current.time == key.time;
}

// Frees a slot that was taken.
class SlotOwner {
  public:
    explicit SlotOwner(DecoderSlots& slots) : slots_(slots) {}
    ~SlotOwner() { slots_.Free(); }
    SlotOwner(const SlotOwner&) = delete;
    SlotOwner& operator=(const SlotOwner&) = delete;

  private:
    DecoderSlots& slots_;
};

ThumbnailCache::Text AsDataUrl(std::string_view png) {
    constexpr std::string_view kStart = "data:image/png;base64,";
    KXP::SlabString text(kStart.size() + KXP::Base64Length(png.size()), '\0');
    KXP::EncodeBase64(png, std::copy(kStart.begin(), kStart.end(), text.data()));
    return std::make_shared<const KXP::SlabString>(std::move(text));
}

DrawnPicture DrawFile(const ovnxmedia::MediaLibrary& media, int file, bool isVideo,
                      const ThumbnailCache::Key& key, const std::atomic<bool>& cancelled,
                      std::string& error) {
    const auto draw = isVideo ? media.videoFrame : media.stillThumbnail;
    return DrawInBox(media, key.width, key.height, cancelled, error,
                     [&](const OvnxMediaRequest* request, OvnxMediaPicture* picture) {
                         return draw(file, request, picture);
                     });
}

}  // namespace

ThumbnailCache::Text Thumbnailer::Make(const std::string& path, uint32_t width, uint32_t height,
                                       const std::atomic<bool>& cancelled,
                                       std::optional<DrawnThumbnail>& drawn, std::string& error) {
    ThumbnailCache::Key key{path, 0, 0, width, height};
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        FillKey(status, key);
        ThumbnailCache::Text text = cache_.Find(key);
        if (!text) text = FindOnDisk(key);
        if (text) return text;
    }
    const ovnxmedia::MediaLibrary* const media = Media();
    if (!media) {
        error = "there is no media module";
        return nullptr;
    }
    Making making{{key, {}}};
    ThumbnailCache::Text text = MakeInSlot(*media, making, cancelled, error);
    if (!making.mayBeStored) return text;
    files_.Put(making.thumbnail.key, making.thumbnail.picture.png);
    if (making.isDrawn) drawn = std::move(making.thumbnail);
    return text;
}

void Thumbnailer::Share(const DrawnThumbnail& drawn) {
    if (const ovnxmedia::MediaLibrary* const media = Media()) desktop::LeaveThumbnail(*media, drawn);
}

ThumbnailCache::Text Thumbnailer::FindOnDisk(const ThumbnailCache::Key& key) {
    // What cannot be opened any more has no thumbnail after a restart.
    if (access(key.path.c_str(), R_OK) != 0) return nullptr;
    const KXP::SlabString png = ThumbnailFiles::Find(key);
    if (png.empty()) return nullptr;
    ThumbnailCache::Text text = AsDataUrl(png);
    cache_.Put(key, text);
    return text;
}

ThumbnailCache::Text Thumbnailer::MakeInSlot(const ovnxmedia::MediaLibrary& media, Making& making,
                                             const std::atomic<bool>& cancelled, std::string& error) {
    // Requests that wait hold no open file, however many they are.
    if (!slots_.Take(cancelled)) {
        error = "cancelled";
        return nullptr;
    }
    const SlotOwner slot(slots_);
    ThumbnailCache::Key& key = making.thumbnail.key;
    struct stat status {};
    const KXP::FileDescriptor file = KXP::OpenForRead(key.path);
    if (!file.IsOpen() || fstat(file.get(), &status) != 0) {
        error = "it cannot be opened";
        return nullptr;
    }
    FillKey(status, key);
    // Another request may have made the same picture meanwhile.
    ThumbnailCache::Text text = cache_.Find(key);
    if (text) return text;
    DrawnPicture& picture = making.thumbnail.picture;
    // Other programs choose another frame of a video, and some draw a border around it.
    const bool isVideo = media.probe(file.get()) == OVNX_MEDIA_KIND_VIDEO;
    if (!isVideo) picture = desktop::FindThumbnail(media, key, cancelled);
    making.isDrawn = picture.png.empty();
    if (making.isDrawn) picture = DrawFile(media, file.get(), isVideo, key, cancelled, error);
    if (picture.png.empty()) return nullptr;
    text = AsDataUrl(picture.png);
    cache_.Put(key, text);
    // The picture of a file that is being written would outlast the process.
    making.mayBeStored = IsStill(file, key);
    return text;
}
