#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"

#include <iterator>
#include <utility>

ThumbnailCache::Text ThumbnailCache::Find(const Key& key) {
    const KXP::MutexLock lock(mutex_);
    const auto found = byKey_.find(key);
    if (found == byKey_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, *found);
    return (*found)->text;
}

void ThumbnailCache::Put(const Key& key, Text text) {
    Entry entry{key, std::move(text)};
    if (Cost(entry) > maxBytes_) return;
    const KXP::MutexLock lock(mutex_);
    if (byKey_.count(key) > 0) return;
    entries_.push_front(std::move(entry));
    byKey_.insert(entries_.begin());
    bytes_ += Cost(entries_.front());
    while (bytes_ > maxBytes_) {
        bytes_ -= Cost(entries_.back());
        byKey_.erase(std::prev(entries_.end()));
        entries_.pop_back();
    }
}
