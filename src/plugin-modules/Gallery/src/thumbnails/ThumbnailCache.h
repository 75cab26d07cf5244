// The thumbnails asked for last, bounded in bytes. A file that changes has another key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "base/SlabMemory.h"
#include "common/threads/Mutex.h"

class ThumbnailCache {
  public:
    struct Key {
        std::string path;
        uint64_t size = 0;  // bytes
        int64_t time = 0;   // of the last change, nanoseconds since 1970
        uint32_t width = 0;
        uint32_t height = 0;

        bool operator<(const Key& other) const {
            return std::tie(path, size, time, width, height) <
                   std::tie(other.path, other.size, other.time, other.width, other.height);
        }
    };
    using Text = std::shared_ptr<const KXP::SlabString>;

    explicit ThumbnailCache(size_t maxBytes) : maxBytes_(maxBytes) {}

    // Null when there is none.
    Text Find(const Key& key) EXCLUDES(mutex_);
    // Drops those that nobody has asked for the longest. A text larger than the cache is not kept.
    void Put(const Key& key, Text text) EXCLUDES(mutex_);

  private:
    struct Entry {
        Key key;
        Text text;
    };
    using Entries = std::list<Entry>;

    static size_t Cost(const Entry& entry) { return entry.text->size() + 2 * entry.key.path.size() + 256; }

    const size_t maxBytes_;
    KXP::Mutex mutex_;
    Entries entries_ GUARDED_BY(mutex_);  // the last asked for first
    std::map<Key, Entries::iterator> byKey_ GUARDED_BY(mutex_);
    size_t bytes_ GUARDED_BY(mutex_) = 0;
};
