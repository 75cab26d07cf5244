// Announced files, and highlights: in flight, matched with their files, and by group.
#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

// How long after a highlight's end its file may still come.
constexpr std::chrono::milliseconds kHighlightGrace{60000};

void KeepMatching(std::vector<TrackedUGC>& records, int32_t TrackedUGC::*bits, int mask) {
    if (mask == 0) return;
    records.erase(std::remove_if(records.begin(), records.end(),
                                 [&](const TrackedUGC& record) { return (record.*bits & mask) == 0; }),
                  records.end());
}

}  // namespace

void UGCTracker::EnqueuePendingHighlight(Highlight& highlight) {
    record_.Promise(highlight);
    CancelLater(highlight);
}

bool UGCTracker::DequeuePendingHighlight(const Highlight& highlight) {
    return host_.GetPendingHighlights().Dequeue(highlight);
}

void UGCTracker::CancelLater(const Highlight& highlight) {
    const std::chrono::milliseconds end(std::max(highlight.GetEndDelta(), 0));
    queue_.EnqueueNotification(queue_.Now() + end + kHighlightGrace, [this, highlight] {
        if (!DequeuePendingHighlight(highlight)) return;
        KXP_LOG(KXP::LogFailure, "Timeout on HL capture, deleted HL in-flight");
        news().AddAtOnce([this, highlight] { host_.NotifyHighlightCanceled(highlight); });
        news().Drain();
    });
}

void UGCTracker::Announce(const std::string& announced, const Announcement& announcement) {
    const std::string path = PlaceOf(announced);
    const std::optional<int32_t> oldId = record_.Announce(path, announcement);
    if (!oldId) return TrackFile(path);
    if (announcement.ofHighlight) {
        KXP_LOG(KXP::LogFailure, "UpdateHighlightInfo %s %d HL id %d", KXP::NameOf(path).c_str(), *oldId,
                announcement.highlight.GetId());
        // On the tracker's worker: the caller is the module's worker, and nobody waits for the file.
        queue_.EnqueueNotification(queue_.Now(), [this] {
            (void)Write(Sum::Keep);
            news().Drain();
        });
    }
    news().Drain();
}

RetVal UGCTracker::GetHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                 const std::string& group) const {
    if (!group.empty()) {
        for (TrackedUGC& record : record_.OfGroup(game, group).records)
            out.push_back(std::move(record));
    }
    host_.GetPendingHighlights().GetPendingHighlights(out, game, group);
    if (!out.empty()) return {};
    KXP_LOG(KXP::LogFailure, "GetHighlights: Could not find highlights in group");
    return {Code::kNotFound, "Could not find highlights in group", 0};
}

RetVal UGCTracker::GetFilteredHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                         const std::string& group, int tagMask, int significanceMask) const {
    if (RetVal found = GetHighlights(out, game, group); found.Failed()) return found;
    KeepMatching(out, &TrackedUGC::highlightTags, tagMask);
    KeepMatching(out, &TrackedUGC::highlightSignificance, significanceMask);
    return {};
}

RetVal UGCTracker::DeleteTrackedHighlights(const std::vector<TrackedUGC>& records) {
    std::vector<TrackedUGC> doomed = records;
    record_.TakeHighlights(doomed);
    for (const TrackedUGC& record : doomed) {
        if (!DeleteUGC(record).Failed()) continue;
        KXP_LOG(KXP::LogFailure, "Failed to delete media file from disk");
        // What is still there is to be seen again, with what is kept of it.
        if (!IsGone(record.path)) TrackFile(record.path);
    }
    RetVal written = Write(Sum::Keep);
    news().Drain();
    return written;
}

RetVal UGCTracker::DeleteTrackedHighlightGroup(const std::string& group, const std::string& game) {
    const GalleryRecord::Group found = record_.OfGroup(game, group);
    if (!found.knowsGame) {
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Could not find persisted game");
        return {};
    }
    if (!found.knowsGroup) {
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Failed to find the group");
        return {};
    }
    RetVal deleted = DeleteTrackedHighlights(found.records);
    if (deleted.Failed())
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Failed to delete tracked highlights: 0x%08u",
                static_cast<unsigned>(deleted.code));
    return deleted;
}
