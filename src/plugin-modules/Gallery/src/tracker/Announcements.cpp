#include "plugin-modules/Gallery/src/tracker/Announcements.h"

void Announcements::Put(const std::string& path, const Announcement& announcement) {
    const KXP::MutexLock lock(mutex_);
    waiting_.insert_or_assign(path, announcement);
}

Announcements::Found Announcements::Take(const std::string& path, bool& unannounced) {
    const KXP::MutexLock lock(mutex_);
    if (waiting_.empty()) return Found::NothingWaits;
    const auto found = waiting_.find(path);
    if (found == waiting_.end()) return Found::OthersWait;
    unannounced = found->second.unannounced;
    waiting_.erase(found);
    return Found::ThisWaited;
}

bool Announcements::GetHighlightInfo(const std::string& path, Highlight& highlight) const {
    const KXP::MutexLock lock(mutex_);
    const auto found = waiting_.find(path);
    if (found == waiting_.end()) return false;
    highlight = found->second.highlight;
    return true;
}
