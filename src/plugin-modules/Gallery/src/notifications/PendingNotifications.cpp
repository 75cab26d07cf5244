#include "plugin-modules/Gallery/src/notifications/PendingNotifications.h"

#include <utility>

#include "common/JsonHelpers.h"

void PendingNotifications::Put(const std::string& path, bool unannounced, const KXP::JSONMessage& message) {
    Entry entry;
    entry.unannounced = unannounced;
    Highlight::ParseHighlightJSON(entry.highlight, KXP::JSONGetObjectOrEmpty(message.payload(), "highlight"));
    KXP::MutexLock lock(mutex_);
    entries_.insert_or_assign(path, std::move(entry));
}

PendingNotifications::Found PendingNotifications::Take(const std::string& path, bool& unannounced) {
    KXP::MutexLock lock(mutex_);
    if (entries_.empty()) return Found::NothingWaits;
    const auto found = entries_.find(path);
    if (found == entries_.end()) return Found::OthersWait;
    unannounced = found->second.unannounced;
    entries_.erase(found);
    return Found::ThisWaited;
}

bool PendingNotifications::GetHighlight(const std::string& path, Highlight& highlight) const {
    KXP::MutexLock lock(mutex_);
    const auto found = entries_.find(path);
    if (found == entries_.end()) return false;
    highlight = found->second.highlight;
    return true;
}
