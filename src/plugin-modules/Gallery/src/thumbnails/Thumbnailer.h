// Thumbnails of media files as data URLs, from memory or made anew by the media module. Any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "common/Mutex.h"
#include "plugin-modules/Gallery/src/thumbnails/MediaModule.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"

class Thumbnailer {
  public:
    // The picture of the file fitted into a box, in pixels of at least 1, as the text of a PNG,
    // "data:image/png;base64,...". Null, with the reason in `error`, for a file without a picture, one that
    // breaks a limit, or once `cancelled` is set. Waits while two others are being made.
    ThumbnailCache::Text Make(const std::string& path, uint32_t width, uint32_t height,
                              const std::atomic<bool>& cancelled, std::string& error) EXCLUDES(mutex_);

  private:
    // One of the two that may be made at once: a decoder may need 256 MiB and a whole processor.
    class Slot {
      public:
        Slot(Thumbnailer& owner, const std::atomic<bool>& cancelled);
        ~Slot();
        Slot(const Slot&) = delete;
        Slot& operator=(const Slot&) = delete;

        // False when the request was cancelled meanwhile.
        bool taken() const { return taken_; }

      private:
        Thumbnailer& owner_;
        bool taken_ = false;
    };

    static ThumbnailCache::Text Decode(const MediaModule& media, int file, const ThumbnailCache::Key& key,
                                       const std::atomic<bool>& cancelled, std::string& error);

    ThumbnailCache cache_{32 << 20};
    KXP::Mutex mutex_;
    KXP::CondVar slotFree_;
    unsigned busy_ GUARDED_BY(mutex_) = 0;
};
