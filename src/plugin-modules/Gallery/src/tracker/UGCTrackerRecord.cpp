// How a record is made, renewed and removed, and what people gave it.
#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

// A gallery of up to this many records is written in passing; the answer to a page does not wait for a larger
// one.
constexpr size_t kWrittenInPassing = 2000;

}  // namespace

UGCTracker::RecordPtr UGCTracker::RecordAt(const std::string& path) const {
    const KXP::MutexLock lock(mutex_);
    return records_.FindByPath(path);
}

UGCTracker::RecordPtr UGCTracker::FindRecord(const std::string& path) const {
    if (RecordPtr found = RecordAt(path)) return found;
    const std::optional<std::string> place = place_.CapturePathOf(path);
    return place ? RecordAt(*place) : nullptr;
}

void UGCTracker::TrackUGC(TrackedUGC record, const KeptFacts& hint) {
    // The folder decides which game it is, not the file's own metadata, because users sort their captures.
    record.profileName = KXP::NameOf(KXP::ParentOf(record.path));

    const KXP::MutexLock lock(mutex_);
    // Another thread may have tracked it meanwhile.
    if (records_.FindByPath(record.path)) return;
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    const KeptFacts& known = kept ? kept->facts : hint;
    Apply(known, record);
    const KeptFacts facts = TakeHighlight(record, known.told);
    if (!IsFreeId(record.id)) record.id = NewId();
    Keep(record, facts);
    const RecordPtr entered = records_.Track(std::move(record));
    entered_.NotifyAll();
    AddTrackedNews(entered);
}

void UGCTracker::RenewUGC(TrackedUGC record) {
    record.profileName = KXP::NameOf(KXP::ParentOf(record.path));
    const KXP::MutexLock lock(mutex_);
    const RecordPtr known = records_.FindByPath(record.path);
    if (!known) return;  // its removal was reported meanwhile, and so will be this file
    // A capture that was moved over another one brings along what people gave it.
    const KeptPtr moved = kept_.Find(record.path, record.stamp);
    const KeptFacts facts = moved ? moved->facts : FactsOfRecord(*known);
    FillIn(facts, record);
    Keep(record, FactsOf(record, facts.told));
    records_.Renew(std::move(record));
    if (rebuilding_ == Rebuilding::No) {
        AddUsageNews();
    } else {
        news_.Add(News::Change::Untracked, nullptr);
    }
}

// What was announced of a highlight that is new on record. Looked up under the lock: an announcement that
// comes later finds the record.
KeptFacts UGCTracker::TakeHighlight(TrackedUGC& record, bool told) {
    Highlight highlight;
    if (!TrackedUGC::IsAHighlight(record) ||
        !host_.GetAnnouncements().GetHighlightInfo(record.path, highlight))
        return FactsOf(record, told);
    FillIn(FactsOf(highlight, record), record);
    host_.GetPendingHighlights().Dequeue(highlight);
    if (IsFreeId(highlight.GetId())) record.id = highlight.GetId();
    return FactsOf(record, true);
}

bool UGCTracker::IsFreeId(int32_t id) const {
    return records_.IsFreeId(id) && !host_.GetPendingHighlights().HasId(id);
}

int32_t UGCTracker::NewId() {
    int32_t id = records_.NextId();
    while (!IsFreeId(id))
        id = records_.NextId();
    return id;
}

// Ids that were promised to highlights count too.
int32_t UGCTracker::LastId() const {
    const KXP::MutexLock lock(mutex_);
    return std::max(records_.lastId(), host_.GetPendingHighlights().LastId());
}

KeptFacts UGCTracker::FactsOfRecord(const TrackedUGC& record) const {
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    return FactsOf(record, kept && kept->facts.told);
}

void UGCTracker::Keep(const TrackedUGC& record, const KeptFacts& facts) {
    const KeptPtr kept = kept_.Find(record.path, record.stamp);
    const bool isOfFile = kept && kept->path == record.path && kept->stamp == record.stamp;
    const bool isThere = isOfFile ? kept->facts == facts && kept->goneSince == 0 : facts.IsEmpty();
    if (!isThere) kept_.Put({record.path, record.stamp, facts});
}

void UGCTracker::KeepFor(const std::string& path, const std::string& place, const FileStamp& stamp) {
    const RecordPtr record = FindRecord(path);
    if (!record) return;
    TrackedUGC next = *record;
    next.path = PlaceOf(place);
    next.stamp = stamp;
    Keep(next, FactsOfRecord(*record));
    (void)kept_.Save();
}

RetVal UGCTracker::AddMeme(const std::string& path, const std::string& topBarText,
                           const std::string& bottomBarText) {
    const RecordPtr found = FindRecord(path);
    if (!found) return {Code::kNotFound, "UGC not found", 0};
    KeptFacts facts = FactsOfRecord(*found);
    facts.topBarText = topBarText;
    facts.bottomBarText = bottomBarText;
    // Of the file as it is now: that it has changed may not be on record yet.
    const FileStamp now = StampAt(found->path);
    const KeptCaptures::Change change = kept_.Put({found->path, now.IsKnown() ? now : found->stamp, facts});
    if (!change.put) return {Code::kFailure, "The texts are too long to be kept", 0};
    // Kept before they are on record: what a page is shown outlasts the process.
    if (RetVal saved = kept_.Save(); saved.Failed()) {
        kept_.Retract(change);
        return saved;
    }
    const size_t size = ShowKept(found->path);
    if (size > kWrittenInPassing) {
        EnqueueFinish();
        return {};
    }
    RetVal written = Write(Sum::Keep);
    news_.Drain();
    if (!written.Failed()) return {};
    kept_.Retract(change);
    (void)kept_.Save();
    (void)ShowKept(found->path);
    return {Code::kFailure, written.text, written.internal};
}

// Puts on record what is kept of a capture now, whoever has changed it last. Returns the number of records.
size_t UGCTracker::ShowKept(const std::string& path) {
    const KXP::MutexLock lock(mutex_);
    if (const RecordPtr found = records_.FindByPath(path)) {
        const KeptPtr kept = kept_.LatestOf(found->path);
        TrackedUGC record = *found;
        Apply(kept ? kept->facts : KeptFacts{}, record);
        records_.Change(std::move(record));
        news_.Add(News::Change::Untracked, nullptr);
    }
    return records_.size();
}

// Sorts out which of the kept facts are of files that are gone. Those of other galleries too: nobody else
// will look for them.
void UGCTracker::SortOutKept() {
    queue_.AssertOnWorker();
    for (const KeptPtr& kept : kept_.Snapshot()) {
        if (stopping_) return;
        const RecordPtr record = RecordAt(kept->path);
        struct stat status {};
        const bool onRecord = record && record->stamp.SameContent(kept->stamp);
        const bool looked = onRecord || lstat(kept->path.c_str(), &status) == 0;
        if (!looked && !MeansGone(errno)) continue;
        if (onRecord || (looked && StampOf(status).SameContent(kept->stamp))) {
            if (kept->goneSince != 0) kept_.Put(*kept);
        } else {
            kept_.NoteGone(kept->path, kept->stamp);
        }
    }
    (void)kept_.Save();
    (void)kept_.CompactIfLong();
}

void UGCTracker::Drop(const std::vector<std::string>& paths) {
    if (Untrack(paths, UINT64_MAX) == 0) return;
    const KXP::MutexLock lock(mutex_);
    AddUsageNews();
}

void UGCTracker::DropGoneIn(const std::string& folder) {
    std::vector<std::string> gone;
    for (std::string& path : PathsIn(folder))
        if (IsGone(path)) gone.push_back(std::move(path));
    Drop(gone);
}

std::vector<std::string> UGCTracker::PathsIn(const std::string& folder) const {
    std::vector<std::string> paths;
    const KXP::MutexLock lock(mutex_);
    for (const RecordPtr& record : records_.Under(folder + "/"))
        paths.push_back(record->path);
    return paths;
}

// For a folder this removes all records in it. A record that was added after the report is of another file.
void UGCTracker::UntrackPath(const std::string& path, uint64_t before) {
    queue_.AssertOnWorker();
    if (Untrack({path}, before) == 0 && Untrack(PathsIn(path), before) == 0) {
        KXP_LOG(KXP::LogFailure, "UntrackFile failed");
        return;
    }
    const KXP::MutexLock lock(mutex_);
    AddUsageNews();
}

size_t UGCTracker::Untrack(const std::vector<std::string>& paths, uint64_t before) {
    RecordStore::Removed removed;
    {
        const KXP::MutexLock lock(mutex_);
        removed = records_.Remove(paths, before);
        for (const RecordPtr& record : removed.records)
            AddRemovedNews(record);
    }
    for (int i = 0; i < removed.withoutGame; ++i)
        KXP_LOG(KXP::LogFailure, "DeleteFromRecent::Could not find persisted game");
    return removed.records.size();
}

void UGCTracker::AddTrackedNews(const RecordPtr& entered) {
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

void UGCTracker::AddRemovedNews(const RecordPtr& record) {
    kept_.NoteGone(record->path, record->stamp);
    news_.Add(News::Change::None, [this, record] { host_.NotifyUGCDeleted(*record); });
}

void UGCTracker::AddUsageNews() {
    news_.Add(News::Change::Untracked,
              [this, usageKB = records_.usageKB()] { capacity_.UpdateGalleryUsage(usageKB); });
}
