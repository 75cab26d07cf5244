#include "plugin-modules/Gallery/src/tracker/PendingHighlights.h"

#include <algorithm>

void PendingHighlights::Enqueue(const Highlight& highlight) {
    KXP::MutexLock lock(mutex_);
    highlights_[highlight.GetMessageBusRefid()] = highlight;
}

bool PendingHighlights::Dequeue(const Highlight& highlight) {
    KXP::MutexLock lock(mutex_);
    return highlights_.erase(highlight.GetMessageBusRefid()) > 0;
}

void PendingHighlights::GetPendingHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                             const std::string& group) const {
    KXP::MutexLock lock(mutex_);
    for (const auto& [reference, highlight] : highlights_) {
        if (highlight.GetSDKAppInfo().profileName != game) continue;
        if (!group.empty() && highlight.GetGroupId() != group) continue;
        out.emplace_back(highlight);
    }
}

std::vector<Highlight> PendingHighlights::All() const {
    std::vector<Highlight> all;
    const KXP::MutexLock lock(mutex_);
    for (const auto& [reference, highlight] : highlights_)
        all.push_back(highlight);
    return all;
}

bool PendingHighlights::HasId(int32_t id) const {
    const KXP::MutexLock lock(mutex_);
    return std::any_of(highlights_.begin(), highlights_.end(),
                       [id](const auto& entry) { return entry.second.GetId() == id; });
}

int32_t PendingHighlights::LastId() const {
    int32_t last = 0;
    const KXP::MutexLock lock(mutex_);
    for (const auto& [reference, highlight] : highlights_)
        last = std::max(last, highlight.GetId());
    return last;
}
