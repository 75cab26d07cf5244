// Queries of the record.
#include "plugin-modules/Gallery/src/tracker/GalleryRecord.h"

GalleryRecord::RecordPtr GalleryRecord::At(const std::string& path) const {
    const KXP::MutexLock lock(mutex_);
    return records_.FindByPath(path);
}

std::vector<GalleryRecord::RecordPtr> GalleryRecord::Snapshot() const {
    const KXP::MutexLock lock(mutex_);
    return records_.Snapshot();
}

std::vector<std::string> GalleryRecord::PathsIn(const std::string& folder) const {
    std::vector<std::string> paths;
    const KXP::MutexLock lock(mutex_);
    for (const RecordPtr& record : records_.In(folder))
        paths.push_back(record->path);
    return paths;
}

std::vector<GalleryRecord::RecordPtr> GalleryRecord::OfGame(const std::string& game) const {
    const KXP::MutexLock lock(mutex_);
    return records_.OfGame(game);
}

std::vector<GalleryRecord::RecordPtr> GalleryRecord::Newest(size_t count, RecordStore::IdKey& end) const {
    const KXP::MutexLock lock(mutex_);
    return records_.Newest(count, end);
}

std::vector<std::string> GalleryRecord::Games() const {
    std::vector<std::string> names;
    const KXP::MutexLock lock(mutex_);
    for (const auto& [name, game] : records_.games())
        names.push_back(name);
    return names;
}

size_t GalleryRecord::size() const {
    const KXP::MutexLock lock(mutex_);
    return records_.size();
}

uint32_t GalleryRecord::usageKB() const {
    const KXP::MutexLock lock(mutex_);
    return records_.usageKB();
}

uint64_t GalleryRecord::SumKB() const {
    const KXP::MutexLock lock(mutex_);
    return records_.SumKB();
}

uint64_t GalleryRecord::nextPlace() const {
    const KXP::MutexLock lock(mutex_);
    return records_.nextPlace();
}

bool GalleryRecord::Await(const std::string& path, TimePoint until, const std::atomic<bool>& cancelled,
                          const std::atomic<bool>& stopping) const {
    const KXP::MutexLock lock(mutex_);
    while (!records_.FindByPath(path)) {
        if (cancelled || stopping || std::chrono::steady_clock::now() >= until) return false;
        entered_.WaitUntil(mutex_, until);
    }
    return true;
}

// Takes the mutex so that no wait misses what was changed before the call.
void GalleryRecord::Wake() {
    const KXP::MutexLock lock(mutex_);
    entered_.NotifyAll();
}
