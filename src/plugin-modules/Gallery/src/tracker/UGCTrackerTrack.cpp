// How a path gets on record, and how its record is removed.
#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/results/Exception.h"
#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"
#include "plugin-modules/Gallery/src/tracker/CapturePath.h"
#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// How long a new record may wait to be written. A user may be waiting to see a new capture; a rebuild may
// take its time, and is repeated if it does not finish.
constexpr std::chrono::milliseconds kLiveRun{100};
constexpr std::chrono::milliseconds kRebuildRun{1000};

// Marks the queue's entries that track or untrack a file; those in a row share a write.
const char kRunTag = 0;

}  // namespace

void UGCTracker::TrackFile(const std::string& path) {
    if (!KXP::DirectoryExists(path)) TrackWatchedFile(path);
}

void UGCTracker::TrackWatchedFile(const std::string& path) {
    if (KXP::ParentOf(path) != KXP::WithoutSlash(gallery_) && !ignoreList_.Has(path)) EnqueueTrack(path);
}

void UGCTracker::EnqueueTrack(const std::string& path) {
    EnqueueWork(&kRunTag, [this, path] {
        TrackOrLog(path);
        FinishEntry();
    });
}

void UGCTracker::TrackFolder(const std::string& path) {
    EnqueueWork(nullptr, [this, path] {
        const std::string gallery = KXP::WithoutSlash(gallery_);
        if (path == gallery || path == KXP::ParentOf(gallery)) return UpdateTracker();
        for (const std::string& file : ScanFolder(path))
            TrackFile(file);
    });
}

void UGCTracker::UntrackFile(const std::string& path) {
    if (ignoreList_.Has(path)) return;
    uint64_t before = 0;
    {
        const KXP::MutexLock lock(mutex_);
        before = records_.nextPlace();
    }
    EnqueueWork(&kRunTag, [this, path, before] {
        UntrackPath(path, before);
        FinishEntry();
    });
}

// The backlog counts an entry until it begins: until then a known change is missing from the record.
void UGCTracker::EnqueueWork(const void* tag, std::function<void()> work) {
    backlog_.Begin();
    queue_.EnqueueTagged(queue_.Now(), tag, [this, work = std::move(work)] {
        backlog_.End();
        work();
    });
}

void UGCTracker::FinishEntry() {
    queue_.AssertOnWorker();
    if (!MayWaitForNext() && news_.HasUnwritten()) (void)journal_.WriteUGCToTracker(Sum::Later);
    news_.Drain();
    if (!queue_.NextDueIs(&kRunTag)) PaySum();
}

bool UGCTracker::MayWaitForNext() {
    if (!queue_.NextDueIs(&kRunTag)) return false;
    return news_.MayWait(rebuilding_ == Rebuilding::No ? kLiveRun : kRebuildRun);
}

void UGCTracker::TrackNow(const std::string& path) {
    const std::optional<std::string> place = CapturePathOf(path, gallery_);
    if (!place) return;
    TrackOrLog(*place);
    queue_.EnqueueTagged(queue_.Now(), &kRunTag, [this] { FinishEntry(); });
}

void UGCTracker::UntrackNow(const std::string& path) {
    const std::optional<std::string> place = CapturePathOf(path, gallery_);
    if (!place || Untrack({*place}, UINT64_MAX) == 0) return;
    AddUntrackedNews();
    queue_.EnqueueTagged(queue_.Now(), &kRunTag, [this] { FinishEntry(); });
}

bool UGCTracker::AwaitTracked(const std::string& path, std::chrono::steady_clock::time_point until,
                              const std::atomic<bool>& cancelled) const {
    const std::optional<std::string> place = CapturePathOf(path, gallery_);
    if (!place) return false;
    const KXP::MutexLock lock(mutex_);
    while (!records_.FindByPath(*place)) {
        if (cancelled || stopping_ || std::chrono::steady_clock::now() >= until) return false;
        entered_.WaitUntil(mutex_, until);
    }
    return true;
}

// Takes the mutex so that no wait misses what was changed before the call.
void UGCTracker::WakeWaiting() {
    const KXP::MutexLock lock(mutex_);
    entered_.NotifyAll();
}

void UGCTracker::TrackOrLog(const std::string& path) {
    KXP::RetVal result;
    try {
        result = TrackFileTask(path);
    } catch (...) {
        result = KXP::ExceptionToRetVal();
    }
    if (result.Failed()) KXP_LOG(KXP::LogFailure, "Track File failed %s", KXP::ToStr(result).c_str());
}

KXP::RetVal UGCTracker::TrackFileTask(const std::string& path) {
    if (IsTrackedFile(path)) return {KXP::Code::kNothingDone, "File is already tracked as UGC", 0};
    TrackedUGC record;
    if (KXP::RetVal inspected = InspectCapture(path, record); inspected.Failed()) {
        backlog_.NoteRefused(path);
        return inspected;
    }
    TrackUGC(std::move(record));
    return {};
}

void UGCTracker::TrackUGC(TrackedUGC record) {
    // The folder decides which game it is, not the file's own metadata, because users sort their captures.
    record.profileName = KXP::NameOf(KXP::ParentOf(record.path));
    Highlight highlight;

    const KXP::MutexLock lock(mutex_);
    // Another thread may have tracked it meanwhile.
    if (records_.FindByPath(record.path)) return;
    // Looked up under the lock: an announcement that comes later finds the record.
    if (TrackedUGC::IsAHighlight(record) && announcements_.GetHighlightInfo(record.path, highlight)) {
        TakeHighlight(highlight, record);
    } else {
        record.id = records_.NextId();
    }
    const RecordPtr entered = records_.Track(std::move(record));
    entered_.NotifyAll();
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
                const Announcements::Found found = announcements_.Take(entered->path, unannounced);
                host_.NotifyUGCAdded(*entered, found, unannounced);
            });
            break;
    }
}

void UGCTracker::TakeHighlight(const Highlight& highlight, TrackedUGC& record) {
    const auto fill = [](std::string& text, const std::string& from) {
        if (text.empty()) text = from;
    };
    record.id = highlight.GetId();
    fill(record.shortName, highlight.GetSDKAppInfo().appShortName);
    fill(record.highlightDefinitionId, highlight.GetHighlightDefinitionId());
    fill(record.highlightName, highlight.GetHighlightName());
    fill(record.highlightGroupId, highlight.GetGroupId());
    record.highlightTags = highlight.GetTags();
    record.highlightSignificance = highlight.GetSignificance();
    record.eventTimeStamp = highlight.GetTimeStamp();
    pendingHighlights_.Dequeue(highlight);
}

// For a folder this removes all records in it. A record that was added after the report is of another file.
void UGCTracker::UntrackPath(const std::string& path, uint64_t before) {
    queue_.AssertOnWorker();
    if (Untrack({path}, before) == 0) {
        std::vector<std::string> beneath;
        {
            const KXP::MutexLock lock(mutex_);
            for (const RecordPtr& record : records_.Under(path + "/"))
                beneath.push_back(record->path);
        }
        if (Untrack(beneath, before) == 0) {
            KXP_LOG(KXP::LogFailure, "UntrackFile failed");
            return;
        }
    }
    AddUntrackedNews();
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

void UGCTracker::AddRemovedNews(const RecordPtr& record) {
    news_.Add(News::Change::None, [this, record] { host_.NotifyUGCDeleted(*record); });
}

void UGCTracker::AddUntrackedNews() {
    const KXP::MutexLock lock(mutex_);
    news_.Add(News::Change::Untracked,
              [this, usageKB = records_.usageKB()] { capacity_.UpdateGalleryUsage(usageKB); });
}
