// The thumbnails on disk, which outlast the process: below the product's folder in the user's cache, one file
// for each picture and box, for the user alone. Several processes may use them at once: files are replaced
// whole, and one that is damaged, foreign or a link counts as none. No error in here is anybody's failure.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/FileDescriptor.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"

// All calls from any thread.
class ThumbnailFiles {
  public:
    static constexpr uint64_t kMaxBytes = 256 << 20;

    // Beyond `maxBytes` those go that nobody has asked for the longest.
    explicit ThumbnailFiles(uint64_t maxBytes = kMaxBytes);

    // The PNG of a file that is still the one that was drawn; empty when there is none. Only of whole paths.
    static KXP::SlabString Find(const ThumbnailCache::Key& key);
    // Stores a PNG. Looks through the files the first time and after each sixteenth of `maxBytes`.
    void Put(const ThumbnailCache::Key& key, std::string_view png) EXCLUDES(mutex_);

  private:
    bool MustSweepAfter(uint64_t bytes) EXCLUDES(mutex_);

    const uint64_t maxBytes_;
    const uint64_t sweepBytes_;
    KXP::Mutex mutex_;
    uint64_t sinceSweep_ GUARDED_BY(mutex_);  // bytes written
};
