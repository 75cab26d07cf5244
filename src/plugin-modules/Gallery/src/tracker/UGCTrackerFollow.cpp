// How the processes that share a folder agree on one record: one writes its file, the others follow that
// file. Who follows has no watcher; what people give there reaches the writer by the file of kept facts.
#include <algorithm>
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
constexpr std::chrono::seconds kStartAgain{10};

}  // namespace

void UGCTracker::Follow() {
    if (journal_.IsAbandoned()) return;
    for (const KeptPtr& kept : kept().ReadNew())
        TakeKept(*kept);
    if (!journal_.Owns()) journal_.TryOwn() ? TakeOverRecord() : ReadRecord();
    if (journal_.Owns()) WatchAtLast();
    FinishEntry();
    queue_.EnqueueNotification(queue_.Now() + kFollowPeriod, [this] { Follow(); });
}

// What another process has kept.
void UGCTracker::TakeKept(const KeptCapture& kept) {
    const RecordPtr record = record_.At(kept.path);
    if (record && record->stamp.SameContent(kept.stamp)) {
        if (FactsOf(*record, kept.facts.told) != kept.facts) record_.ShowKept(kept.path, kept.stamp);
    } else if (kept.goneSince == 0) {
        TrackWatchedFile(kept.path);  // that process has put it there, maybe a moment ago
    }
}

void UGCTracker::TakeOverRecord() {
    KXP_LOG(KXP::LogMilestone, "The process that wrote %s has ended, this one goes on", kTrackerFileName);
    ReadRecord();
    StartWatcher();
    if (record_.rebuilding() == Rebuilding::InOneFile)
        return Rebuild("The gallery was changed, and nobody has read it yet", {});
    FindMissed();
    // If that process has left a rebuild, it is complete now.
    queue_.EnqueueNotification(queue_.Now(), [this] { host_.SetTrackerState(TrackerUpdateComplete); });
}

// For instance when there are threads again.
void UGCTracker::WatchAtLast() {
    if (Watcher() || queue_.Now() < nextStart_) return;
    nextStart_ = queue_.Now() + kStartAgain;
    StartWatcher();
    if (Watcher()) FindMissed();
}

// Finds what has changed while nobody watched.
void UGCTracker::FindMissed() {
    place_.NoteScanned();
    const FoundFiles found = ScanGallery(gallery());
    for (const std::string& folder : found.unread)
        NoteFailedLook(folder);
    for (const FoundFile& file : found.files) {
        const RecordPtr record = record_.At(file.path);
        if (!record || record->stamp != file.stamp) TrackWatchedFile(file.path);
    }
    DropGoneIn(KXP::WithoutSlash(gallery()));
    journal_.NoteDisturbed(KXP::WithoutSlash(gallery()));
}

// The file may be of another gallery, whose change this process has not heard of yet, or the other has not.
void UGCTracker::ReadRecord() {
    if (journal_.IsNew()) {
        KXP::Document document;
        TrackerInfo info;
        TrackerJournal::Stamps stamps;
        RebuildPlan::Former former;
        std::vector<NewUGC>& records = former.records;
        if (journal_.Read(document, records, info, &stamps).Failed() || info.version != kTrackerVersion)
            return;
        former.TakeStamps(stamps);
        const auto isNone = [this](const NewUGC& record) {
            return place_.KindOf(record->path) != GalleryPlace::Kind::Capture ||
                   (!record_.At(record->path) && IsGone(record->path));
        };
        records.erase(std::remove_if(records.begin(), records.end(), isNone), records.end());
        record_.Follow(std::move(records), info.lastUGCIdUsed, followed_);
        host_.SetUsage(record_.usageKB() / 1000);
        followed_ = true;
    }
    const bool complete = host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateComplete;
    if (!followed_ || !complete || record_.rebuilding() != Rebuilding::InOneFile) return;
    record_.SetRebuilding(Rebuilding::No);
    host_.NotifyTrackerUpdate(TrackerUpdateComplete);
}
