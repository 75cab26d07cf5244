#include "plugin-modules/Gallery/src/tracker/PendingHighlights.h"

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
