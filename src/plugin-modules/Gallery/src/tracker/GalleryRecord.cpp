#include "plugin-modules/Gallery/src/tracker/GalleryRecord.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"

GalleryRecord::GalleryRecord(ITrackerHost& host, CapacityWatch& capacity, const std::string& shareFolder,
                             KXP::Clock& clock, Rebuilding rebuilding)
    : host_(host), capacity_(capacity), news_(clock), kept_(shareFolder), rebuilding_(rebuilding) {
    kept_.Load();
}

void GalleryRecord::Clear() {
    const KXP::MutexLock lock(mutex_);
    records_.Clear();
}

void GalleryRecord::Reserve(size_t count) {
    const KXP::MutexLock lock(mutex_);
    records_.Reserve(count);
}

void GalleryRecord::Load(std::vector<NewUGC> records, TrackedUGCGames games, int32_t lastId) {
    const KXP::MutexLock lock(mutex_);
    records_.Load(std::move(records), std::move(games), lastId);
}

void GalleryRecord::Follow(std::vector<NewUGC> records, int32_t lastId, bool notify) {
    for (const NewUGC& record : records)
        Complete(*record);
    const KXP::MutexLock lock(mutex_);
    const std::vector<RecordPtr> before = records_.Snapshot();
    std::unordered_set<std::string> known;
    for (const RecordPtr& record : before)
        known.insert(record->path);
    records_.Load(std::move(records), lastId);
    entered_.NotifyAll();
    for (const RecordPtr& record : before)
        if (!records_.FindByPath(record->path)) AddRemovedNews(record);
    if (!notify) return;
    AddUsageNews();
    for (const RecordPtr& record : records_.Snapshot())
        if (known.count(record->path) == 0) AddTrackedNews(record);
}

// With what this process knows of it.
void GalleryRecord::Complete(TrackedUGC& record) {
    if (!record.stamp.IsKnown()) record.stamp = StampAt(record.path);
    Highlight highlight;
    if (const KeptPtr given = kept_.LatestOf(record.path, record.stamp)) {
        Apply(given->facts, record);
    } else if (TrackedUGC::IsAHighlight(record) &&
               host_.GetAnnouncements().GetHighlightInfo(record.path, highlight)) {
        FillIn(FactsOf(highlight, record), record);
        Keep(record, FactsOf(record, true));
    }
}

TrackerFileWriter::Content GalleryRecord::TakeContent(const TrackerFileWriter& writer) {
    const KXP::MutexLock lock(mutex_);
    news_.CoverAll();
    TrackerFileWriter::Content content = writer.ContentOf(records_);
    content.info.lastUGCIdUsed = std::max(content.info.lastUGCIdUsed, host_.GetPendingHighlights().LastId());
    return content;
}

void GalleryRecord::Track(NewUGC made, const KeptFacts& hint) {
    TrackedUGC& record = *made;
    // The folder decides which game it is, not the file's own metadata, because users sort their captures.
    record.profileName = KXP::NameOf(KXP::ParentOf(record.path));
    const KeptPtr kept = KeptOf(record);

    const KXP::MutexLock lock(mutex_);
    // Another thread may have tracked it meanwhile.
    if (records_.FindByPath(record.path)) return;
    const KeptFacts& known = kept ? kept->facts : hint;
    Apply(known, record);
    const KeptFacts facts = TakeHighlight(record, known.told);
    if (!IsFreeId(record.id)) record.id = NewId();
    if (kept || !facts.IsEmpty()) Keep(record, facts);
    const RecordPtr entered = records_.Track(std::move(made));
    entered_.NotifyAll();
    AddTrackedNews(entered);
}

void GalleryRecord::Renew(TrackedUGC record) {
    record.profileName = KXP::NameOf(KXP::ParentOf(record.path));
    // A capture that was moved over another one brings along what people gave it.
    const KeptPtr moved = KeptOf(record);
    const KXP::MutexLock lock(mutex_);
    const RecordPtr known = records_.FindByPath(record.path);
    if (!known) return;  // its removal was reported meanwhile, and so will be this file
    const KeptFacts facts = moved ? moved->facts : GivenTo(*known);
    FillIn(facts, record);
    Keep(record, FactsOf(record, facts.told));
    records_.Renew(std::move(record));
    if (rebuilding_ == Rebuilding::No) {
        AddUsageNews();
    } else {
        news_.Add(News::Change::Untracked, nullptr);
    }
}

size_t GalleryRecord::Remove(const std::vector<std::string>& paths, uint64_t before) {
    RecordStore::Removed removed;
    {
        const KXP::MutexLock lock(mutex_);
        removed = records_.Remove(paths, before);
        for (const RecordPtr& record : removed.records)
            AddRemovedNews(record);
        if (!removed.records.empty()) AddUsageNews();
    }
    for (int i = 0; i < removed.withoutGame; ++i)
        KXP_LOG(KXP::LogFailure, "DeleteFromRecent::Could not find persisted game");
    return removed.records.size();
}

bool GalleryRecord::IsFreeId(int32_t id) const {
    return records_.IsFreeId(id) && !host_.GetPendingHighlights().HasId(id);
}

int32_t GalleryRecord::NewId() {
    int32_t id = records_.NextId();
    while (id > 0 && host_.GetPendingHighlights().HasId(id))
        id = records_.NextId();
    if (id > 0) return id;
    // All have been given out; some of their captures are gone.
    for (id = 1; !IsFreeId(id);)
        ++id;
    return id;
}

// Ids that were promised to highlights count too.
int32_t GalleryRecord::LastId() const {
    const KXP::MutexLock lock(mutex_);
    return std::max(records_.lastId(), host_.GetPendingHighlights().LastId());
}

void GalleryRecord::AddTrackedNews(const RecordPtr& entered) {
    switch (rebuilding_) {
        case Rebuilding::InOneFile:
            news_.Add(News::Change::Tracked, [this] { host_.NotifyTrackerUpdate(TrackerUpdateInProgress); });
            break;
        case Rebuilding::Silently:
            news_.Add(News::Change::Tracked, nullptr);
            break;
        case Rebuilding::No:
            news_.Add(News::Change::Tracked, [this, entered, usageKB = records_.usageKB()] {
                capacity_.UpdateGalleryUsage(usageKB);
                bool unannounced = true;
                const Announcements::Found found = host_.GetAnnouncements().Take(entered->path, unannounced);
                host_.NotifyUGCAdded(*entered, found, unannounced);
            });
            break;
    }
}

void GalleryRecord::AddRemovedNews(const RecordPtr& record) {
    kept_.NoteGone(record->path, record->stamp);
    news_.Add(News::Change::None, [this, record] { host_.NotifyUGCDeleted(*record); });
}

void GalleryRecord::AddUsageNews() {
    news_.Add(News::Change::Untracked,
              [this, usageKB = records_.usageKB()] { capacity_.UpdateGalleryUsage(usageKB); });
}
