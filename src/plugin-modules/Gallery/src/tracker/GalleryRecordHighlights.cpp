// Announced files and highlights, on record.
#include <map>
#include <set>
#include <utility>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/tracker/GalleryRecord.h"

// In one critical section: either the announcement finds the record, or the record will find the
// announcement.
std::optional<int32_t> GalleryRecord::Announce(const std::string& path, const Announcement& announcement) {
    const KXP::MutexLock lock(mutex_);
    const RecordPtr found = records_.FindByPath(path);
    if (!found) {
        host_.GetAnnouncements().Put(path, announcement);
        return {};
    }
    if (announcement.ofHighlight) UpdateHighlight(*found, announcement.highlight);
    news_.Add(News::Change::None, [this, path, announcement] { NotifyAnnounced(path, announcement); });
    return found->id;
}

void GalleryRecord::UpdateHighlight(const TrackedUGC& found, const Highlight& highlight) {
    TrackedUGC record = found;
    host_.GetPendingHighlights().Dequeue(highlight);
    if (IsFreeId(highlight.GetId())) record.id = highlight.GetId();
    Apply(FactsOf(highlight, record), record);
    Keep(record, FactsOf(record, true));
    records_.Replace(std::move(record));
}

void GalleryRecord::NotifyAnnounced(const std::string& path, const Announcement& announcement) {
    // Drops an earlier announcement of the same file that nothing has used.
    bool unannounced = false;
    (void)host_.GetAnnouncements().Take(path, unannounced);
    const RecordPtr found = At(path);
    if (!found) return;
    TrackedUGC record = *found;
    if (announcement.ofHighlight) {
        host_.NotifyHighlightSaved(record, announcement.unannounced);
    } else {
        host_.NotifyCaptureSaved(record, false);
    }
}

// What was announced of a highlight that is new on record. Looked up under the lock: an announcement that
// comes later finds the record.
KeptFacts GalleryRecord::TakeHighlight(TrackedUGC& record, bool told) {
    Highlight highlight;
    if (!TrackedUGC::IsAHighlight(record) ||
        !host_.GetAnnouncements().GetHighlightInfo(record.path, highlight))
        return FactsOf(record, told);
    FillIn(FactsOf(highlight, record), record);
    host_.GetPendingHighlights().Dequeue(highlight);
    if (IsFreeId(highlight.GetId())) record.id = highlight.GetId();
    return FactsOf(record, true);
}

void GalleryRecord::Promise(Highlight& highlight) {
    const KXP::MutexLock lock(mutex_);
    highlight.SetId(NewId());
    host_.GetPendingHighlights().Enqueue(highlight);
}

void GalleryRecord::TakeHighlights(std::vector<TrackedUGC>& records) {
    std::map<std::pair<std::string, std::string>, std::set<int>> groups;  // by group and game
    for (const TrackedUGC& record : records)
        groups[{record.highlightGroupId, record.profileName}].insert(record.id);
    std::vector<const char*> missing;
    missing.reserve(groups.size());
    std::vector<RecordPtr> taken;
    {
        const KXP::MutexLock lock(mutex_);
        for (TrackedUGC& record : records) {
            RecordPtr found = records_.Find(record.id, record.profileName, record.highlightGroupId);
            if (!found) continue;
            record.path = found->path;
            taken.push_back(std::move(found));
        }
        // With all memory at hand: a record and its group go together.
        // The usage is not reduced: it is too high, which is safe, until the next rebuild counts again.
        for (const RecordPtr& record : taken)
            records_.Take(*record);
        for (const auto& [key, ids] : groups)
            if (const char* const text = RemoveFromGroup(key.second, key.first, ids)) missing.push_back(text);
        for (const RecordPtr& record : taken)
            AddRemovedNews(record);
    }
    for (const char* const text : missing)
        KXP_LOG(KXP::LogFailure, "%s", text);
}

// What is missing, for the log; null when nothing is.
const char* GalleryRecord::RemoveFromGroup(const std::string& game, const std::string& group,
                                           const std::set<int>& ids) {
    const auto found = records_.games().find(game);
    if (found == records_.games().end()) return "DeleteGroupHighlights: Could not find persisted game";
    if (found->second.groups.count(group) == 0) return "GetGroupHighlights: Failed to find the group";
    records_.RemoveFromGroup(game, group, ids);
    return nullptr;
}

GalleryRecord::Group GalleryRecord::OfGroup(const std::string& game, const std::string& group) const {
    Group of;
    const KXP::MutexLock lock(mutex_);
    const auto found = records_.games().find(game);
    of.knowsGame = found != records_.games().end();
    of.knowsGroup = of.knowsGame && found->second.groups.count(group) > 0;
    for (const RecordPtr& record : records_.OfGroup(game, group))
        of.records.push_back(*record);
    return of;
}
