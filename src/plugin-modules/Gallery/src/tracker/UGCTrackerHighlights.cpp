// Announced files, and highlights: in flight, matched with their files, and by group.
#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
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
    {
        const KXP::MutexLock lock(mutex_);
        highlight.SetId(NewId());
        host_.GetPendingHighlights().Enqueue(highlight);
    }
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
        news_.AddAtOnce([this, highlight] { host_.NotifyHighlightCanceled(highlight); });
        news_.Drain();
    });
}

// In one critical section: either the announcement finds the record, or the record will find the
// announcement.
void UGCTracker::Announce(const std::string& announced, const Announcement& announcement) {
    const std::string path = PlaceOf(announced);
    std::optional<int32_t> oldId;
    {
        const KXP::MutexLock lock(mutex_);
        if (const RecordPtr found = records_.FindByPath(path)) {
            oldId = found->id;
            if (announcement.ofHighlight) UpdateHighlightInfo(*found, announcement.highlight);
            news_.Add(News::Change::None,
                      [this, path, announcement] { NotifyAnnounced(path, announcement); });
        } else {
            host_.GetAnnouncements().Put(path, announcement);
        }
    }
    if (!oldId) return TrackFile(path);
    if (announcement.ofHighlight) {
        KXP_LOG(KXP::LogFailure, "UpdateHighlightInfo %s %d HL id %d", KXP::NameOf(path).c_str(), *oldId,
                announcement.highlight.GetId());
        // On the tracker's worker: the caller is the module's worker, and nobody waits for the file.
        queue_.EnqueueNotification(queue_.Now(), [this] {
            (void)Write(Sum::Keep);
            news_.Drain();
        });
    }
    news_.Drain();
}

void UGCTracker::UpdateHighlightInfo(const TrackedUGC& found, const Highlight& highlight) {
    TrackedUGC record = found;
    host_.GetPendingHighlights().Dequeue(highlight);
    if (IsFreeId(highlight.GetId())) record.id = highlight.GetId();
    Apply(FactsOf(highlight, record), record);
    Keep(record, FactsOf(record, true));
    records_.Replace(std::move(record));
}

void UGCTracker::NotifyAnnounced(const std::string& path, const Announcement& announcement) {
    // Drops an earlier announcement of the same file that nothing has used.
    bool unannounced = false;
    (void)host_.GetAnnouncements().Take(path, unannounced);
    TrackedUGC record;
    if (GetUGCData(path, record).Failed()) return;
    if (announcement.ofHighlight) {
        host_.NotifyHighlightSaved(record, announcement.unannounced);
    } else {
        host_.NotifyCaptureSaved(record, false);
    }
}

RetVal UGCTracker::GetHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                 const std::string& group) const {
    if (!group.empty()) {
        KXP::MutexLock lock(mutex_);
        for (const RecordPtr& record : records_.OfGroup(game, group))
            out.push_back(*record);
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
    {
        KXP::MutexLock lock(mutex_);
        for (TrackedUGC& record : doomed) {
            // The usage is not reduced: it is too high, which is safe, until the next rebuild counts again.
            const RecordPtr taken = records_.Take(record.id, record.profileName, record.highlightGroupId);
            if (!taken) continue;
            record.path = taken->path;
            AddRemovedNews(taken);
        }
    }
    RemoveFromGroups(doomed);
    for (const TrackedUGC& record : doomed) {
        if (DeleteUGC(record).Failed()) KXP_LOG(KXP::LogFailure, "Failed to delete media file from disk");
    }
    RetVal written = Write(Sum::Keep);
    news_.Drain();
    return written;
}

void UGCTracker::RemoveFromGroups(const std::vector<TrackedUGC>& records) {
    using Group = std::pair<std::string, std::string>;  // group and game
    std::map<Group, std::set<int>> groups;
    for (const TrackedUGC& record : records)
        groups[{record.highlightGroupId, record.profileName}].insert(record.id);
    for (const auto& [key, ids] : groups) {
        const auto& [group, game] = key;
        bool knowsGame = false;
        bool knowsGroup = false;
        {
            KXP::MutexLock lock(mutex_);
            const auto found = records_.games().find(game);
            knowsGame = found != records_.games().end();
            knowsGroup = knowsGame && found->second.groups.count(group) > 0;
            if (knowsGroup) records_.RemoveFromGroup(game, group, ids);
        }
        if (!knowsGame)
            KXP_LOG(KXP::LogFailure, "DeleteGroupHighlights: Could not find persisted game");
        else if (!knowsGroup)
            KXP_LOG(KXP::LogFailure, "GetGroupHighlights: Failed to find the group");
    }
}

RetVal UGCTracker::DeleteTrackedHighlightGroup(const std::string& group, const std::string& game) {
    bool knowsGame = false;
    bool knowsGroup = false;
    std::vector<TrackedUGC> records;
    {
        KXP::MutexLock lock(mutex_);
        const auto found = records_.games().find(game);
        knowsGame = found != records_.games().end();
        knowsGroup = knowsGame && found->second.groups.count(group) > 0;
        for (const RecordPtr& record : records_.OfGroup(game, group))
            records.push_back(*record);
    }
    if (!knowsGame) {
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Could not find persisted game");
        return {};
    }
    if (!knowsGroup) {
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Failed to find the group");
        return {};
    }
    RetVal deleted = DeleteTrackedHighlights(records);
    if (deleted.Failed())
        KXP_LOG(KXP::LogFailure, "DeleteTrackedHighlightGroup: Failed to delete tracked highlights: 0x%08u",
                static_cast<unsigned>(deleted.code));
    return deleted;
}
