// How the processes that share a folder agree on one record: one writes its file, the others follow that
// file. Who follows has no watcher; what people give there reaches the writer by the file of kept facts.
#include <algorithm>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

// A page waits up to two seconds for a file that it has moved.
constexpr std::chrono::milliseconds kFollowPeriod{500};

}  // namespace

void UGCTracker::FollowLater() {
    queue_.EnqueueNotification(queue_.Now() + kFollowPeriod, [this] { Follow(); });
}

void UGCTracker::Follow() {
    queue_.AssertOnWorker();
    for (const KeptPtr& kept : kept_.ReadNew())
        TakeKept(*kept);
    if (!journal_.Owns()) journal_.TryOwn() ? TakeOverRecord() : ReadRecord();
    FinishEntry();
    FollowLater();
}

// What another process has kept.
void UGCTracker::TakeKept(const KeptCapture& kept) {
    const RecordPtr record = RecordAt(kept.path);
    if (record && record->stamp.SameContent(kept.stamp)) {
        if (FactsOf(*record, kept.facts.told) != kept.facts) (void)ShowKept(kept.path);
    } else if (kept.goneSince == 0) {
        TrackWatchedFile(kept.path);  // that process has put it there, maybe a moment ago
    }
}

void UGCTracker::TakeOverRecord() {
    KXP_LOG(KXP::LogMilestone, "The process that wrote %s has ended, this one goes on", kTrackerFileName);
    ReadRecord();
    StartWatcher();
    if (rebuilding_ == Rebuilding::InOneFile)
        return Rebuild("The gallery was changed, and nobody has read it yet", {});
    FindMissed();
    // If that process has left a rebuild, it is complete now.
    queue_.EnqueueNotification(
        queue_.Now(), [this] { host_.GetGallerySettings()->UpdateTrackerSettings(TrackerUpdateComplete); });
}

// Finds what has changed while nobody watched.
void UGCTracker::FindMissed() {
    place_.NoteScanned();
    const FoundFiles found = ScanGallery(gallery());
    for (const std::string& folder : found.unread)
        NoteFailedLook(folder);
    for (const FoundFile& file : found.files) {
        const RecordPtr record = RecordAt(file.path);
        if (!record || record->stamp != file.stamp) TrackWatchedFile(file.path);
    }
    DropGoneIn(KXP::WithoutSlash(gallery()));
    journal_.NoteDisturbed();
}

// The file may be of another gallery, whose change this process has not heard of yet, or the other has not.
void UGCTracker::ReadRecord() {
    if (journal_.IsNew()) {
        KXP::Document document;
        TrackerInfo info;
        TrackerJournal::Stamps stamps;
        if (journal_.Read(document, info, &stamps).Failed() || info.version != kTrackerVersion) return;
        RebuildPlan::Former former;
        former.records = ParseUGCFromJSON(document);
        former.TakeStamps(stamps);
        TakeRecord(std::move(former.records), info.lastUGCIdUsed);
    }
    const bool complete = host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateComplete;
    if (!followed_ || !complete || rebuilding_ != Rebuilding::InOneFile) return;
    rebuilding_ = Rebuilding::No;
    host_.NotifyTrackerUpdate(TrackerUpdateComplete);
}

void UGCTracker::TakeRecord(std::vector<TrackedUGC> records, int32_t lastId) {
    const auto isNone = [this](const TrackedUGC& record) {
        return place_.KindOf(record.path) != GalleryPlace::Kind::Capture ||
               (!RecordAt(record.path) && IsGone(record.path));
    };
    records.erase(std::remove_if(records.begin(), records.end(), isNone), records.end());
    for (TrackedUGC& record : records)
        CompleteFollowed(record);
    const KXP::MutexLock lock(mutex_);
    const std::vector<RecordPtr> before = records_.Snapshot();
    std::unordered_set<std::string> known;
    for (const RecordPtr& record : before)
        known.insert(record->path);
    records_.Load(std::move(records), lastId);
    for (const RecordPtr& record : before)
        if (!records_.FindByPath(record->path)) AddRemovedNews(record);
    if (followed_) AddUsageNews();
    for (const RecordPtr& record : records_.Snapshot())
        if (followed_ && known.count(record->path) == 0) AddTrackedNews(record);
    host_.GetGallerySettings()->SetCurrentSizeMB(records_.usageKB() / 1000);
    followed_ = true;
    entered_.NotifyAll();
}

// With what this process knows of it.
void UGCTracker::CompleteFollowed(TrackedUGC& record) {
    if (!record.stamp.IsKnown()) record.stamp = StampAt(record.path);
    Highlight highlight;
    if (const KeptPtr kept = kept_.LatestOf(record.path)) {
        Apply(kept->facts, record);
    } else if (TrackedUGC::IsAHighlight(record) &&
               host_.GetAnnouncements().GetHighlightInfo(record.path, highlight)) {
        FillIn(FactsOf(highlight, record), record);
        Keep(record, FactsOf(record, true));
    }
}
