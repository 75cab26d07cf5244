// Thumbnails of media files as data URLs: from memory, from disk, or newly made by the media library, of a
// still from the desktop's own thumbnail of it where that is large enough. Any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "libraries/ovnx-media/client/MediaLibrary.h"
#include "plugin-modules/Gallery/src/thumbnails/DecoderSlots.h"
#include "plugin-modules/Gallery/src/thumbnails/DesktopThumbnails.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailFiles.h"

class Thumbnailer {
  public:
    // The picture of the file fitted into a box, in pixels of at least 1, as the text of a PNG,
    // "data:image/png;base64,...". Null, with the reason in `error`, for a file without a picture, one that
    // exceeds a limit, or once `cancelled` is set. Waits while DecoderSlots::kCount others are being made.
    // Sets `drawn`, for Share, when the file itself was decoded.
    ThumbnailCache::Text Make(const std::string& path, uint32_t width, uint32_t height,
                              const std::atomic<bool>& cancelled, std::optional<DrawnThumbnail>& drawn,
                              std::string& error);
    // Leaves a thumbnail to the desktop's programs. Takes some milliseconds.
    static void Share(const DrawnThumbnail& drawn);

    // Sets `cancelled` and ends the Make that was called with it.
    void Cancel(std::atomic<bool>& cancelled) { slots_.Cancel(cancelled); }

  private:
    struct Making {
        DrawnThumbnail thumbnail;
        bool isDrawn = false;      // from the file itself
        bool mayBeStored = false;  // the file did not change meanwhile
    };

    ThumbnailCache::Text FindOnDisk(const ThumbnailCache::Key& key);
    ThumbnailCache::Text MakeInSlot(const ovnxmedia::MediaLibrary& media, Making& making,
                                    const std::atomic<bool>& cancelled, std::string& error);

    // Small, because those on disk are at hand nearly as soon.
    ThumbnailCache cache_{2 << 20};
    ThumbnailFiles files_;
    DecoderSlots slots_;
};
