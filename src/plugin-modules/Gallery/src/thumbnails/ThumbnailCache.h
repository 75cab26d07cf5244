// The thumbnails asked for last, bounded in bytes. A file that changes has another key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <set>
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
    // Thousands of small blocks that come and go with the pages that people look at.
    using Entries = std::list<Entry, KXP::SlabAllocator<Entry>>;

    // Finds an entry by its key without a copy of it.
    struct ByKey {
        using is_transparent = void;
        bool operator()(Entries::iterator a, Entries::iterator b) const { return a->key < b->key; }
        bool operator()(Entries::iterator a, const Key& b) const { return a->key < b; }
        bool operator()(const Key& a, Entries::iterator b) const { return a < b->key; }
    };
    using Index = std::set<Entries::iterator, ByKey, KXP::SlabAllocator<Entries::iterator>>;

    static size_t Cost(const Entry& entry) { return entry.text->size() + entry.key.path.size() + 320; }

    const size_t maxBytes_;
    KXP::Mutex mutex_;
    Entries entries_ GUARDED_BY(mutex_);  // the last asked for first
    Index byKey_ GUARDED_BY(mutex_);
    size_t bytes_ GUARDED_BY(mutex_) = 0;
};
