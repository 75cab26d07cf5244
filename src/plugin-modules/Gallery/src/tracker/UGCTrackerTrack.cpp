// The road of one path: onto the record and off it again.
#include <algorithm>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/Exception.h"
#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"
#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"
#include "plugin-modules/Gallery/src/tracker/TrackerPaths.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// How long a file that is on record may wait for the write. Somebody looks on at what comes in live; a
// rebuild, whose mark is on disk, only has to be done.
constexpr std::chrono::milliseconds kLiveRun{100};
constexpr std::chrono::milliseconds kRebuildRun{1000};

constexpr size_t kMostRefused = 4096;

// Marks the queue's entries that track or untrack, which share their write with the next of the kind.
const char kRunTag = 0;

}  // namespace

void UGCTracker::TrackFile(const std::string& path) {
    if (ParentOf(path) == WithoutSlash(gallery_) || ignoreList_.Has(path) || KXP::DirectoryExists(path))
        return;
    EnqueueTrack(path);
}

void UGCTracker::EnqueueTrack(const std::string& path) {
    EnqueueWork(&kRunTag, [this, path] {
        KXP::RetVal result;
        try {
            result = TrackFileTask(path);
        } catch (...) {
            result = KXP::ExceptionToRetVal();
        }
        if (result.Failed()) KXP_LOG(KXP::LogFailure, "Track File failed %s", KXP::ToStr(result).c_str());
        EndStep();
    });
}

void UGCTracker::EndStep() {
    if (!MayWaitForNext()) FinishRun(Sum::Later);
    outbox_.Drain();
    if (!queue_.NextDueIs(&kRunTag)) PaySum();
}

void UGCTracker::PaySum() {
    if (!sumOwed_) return;
    (void)WriteUGCToTracker(Sum::Renew, false);
    outbox_.Drain();
}

void UGCTracker::EnqueueWork(const void* tag, std::function<void()> work) {
    ++waiting_;
    queue_.EnqueueTagged(queue_.Now(), tag, [this, work = std::move(work)] {
        --waiting_;
        work();
    });
}

void UGCTracker::TrackFolder(const std::string& path) {
    EnqueueWork(nullptr, [this, path] {
        const std::string gallery = WithoutSlash(gallery_);
        if (path == gallery || path == ParentOf(gallery)) {
            (void)UpdateTracker();
            return;
        }
        for (const std::string& file : ScanFolder(path))
            TrackFile(file);
    });
}

KXP::RetVal UGCTracker::TrackFileTask(const std::string& path) {
    queue_.AssertOnWorker();
    if (IsTrackedFile(path)) return {KXP::Code::kNothingDone, "File is already tracked as UGC", 0};
    TrackedUGC record;
    if (KXP::RetVal inspected = InspectCapture(path, record); inspected.Failed()) {
        NoteRefused(path);
        return inspected;
    }
    EnterRecord(std::move(record));
    return {};
}

void UGCTracker::NoteRefused(const std::string& path) {
    KXP::MutexLock lock(mutex_);
    if (refused_.size() >= kMostRefused) refused_.clear();
    refused_.insert(path);
}

void UGCTracker::EnterRecord(TrackedUGC record) {
    // The folder, and not what the file says of itself, decides the game: users sort their captures.
    record.profileName = NameOf(ParentOf(record.path));
    Highlight highlight;
    const bool rebuilding = host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateInProgress;
    const Step::Kind kind = updateInProgress_ ? Step::Tick : rebuilding ? Step::Silent : Step::Added;

    KXP::MutexLock lock(mutex_);
    // Asked for under the lock: an announcement that comes too late to be found here finds the record.
    if (TrackedUGC::IsAHighlight(record) && host_.GetHighlightInfo(record.path, highlight)) {
        TakeHighlight(highlight, record);
    } else {
        record.id = NextId();
    }
    const RecordPtr entered = records_.Track(std::move(record));
    usageKB_ += std::min(entered->sizeKB, UINT32_MAX - usageKB_);
    AppendStep({kind, entered, usageKB_});
}

void UGCTracker::AppendStep(Step step) {
    if (run_.empty()) runStart_ = clock_.Now();
    run_.push_back(std::move(step));
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

int32_t UGCTracker::NextId() {
    if (lastUGCIdUsed_ < INT32_MAX) ++lastUGCIdUsed_;
    return lastUGCIdUsed_;
}

bool UGCTracker::MayWaitForNext() {
    if (!queue_.NextDueIs(&kRunTag)) return false;
    const bool rebuilding =
        updateInProgress_ || host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateInProgress;
    KXP::MutexLock lock(mutex_);
    return run_.empty() || clock_.Now() - runStart_ < (rebuilding ? kRebuildRun : kLiveRun);
}

void UGCTracker::UntrackFile(const std::string& path) {
    if (ignoreList_.Has(path)) return;
    EnqueueWork(&kRunTag, [this, path] {
        UntrackPath(path);
        EndStep();
    });
}

void UGCTracker::UntrackPath(const std::string& path) {
    queue_.AssertOnWorker();
    size_t removed = Untrack({path});
    if (removed == 0) {
        std::vector<std::string> beneath;
        {
            KXP::MutexLock lock(mutex_);
            for (const RecordPtr& record : records_.Under(path + "/"))
                beneath.push_back(record->path);
        }
        removed = Untrack(beneath);
    }
    if (removed == 0) {
        KXP_LOG(KXP::LogFailure, "UntrackFile failed");
        return;
    }
    KXP::MutexLock lock(mutex_);
    AppendStep({Step::Flushed, nullptr, usageKB_});
}

size_t UGCTracker::Untrack(const std::vector<std::string>& paths) {
    RecordStore::Removed removed;
    {
        KXP::MutexLock lock(mutex_);
        removed = records_.Remove(paths);
        for (const RecordPtr& record : removed.records) {
            usageKB_ -= std::min(usageKB_, record->sizeKB);
            TellRemoved(record);
        }
    }
    for (int i = 0; i < removed.withoutGame; ++i)
        KXP_LOG(KXP::LogFailure, "DeleteFromRecent::Could not find persisted game");
    return removed.records.size();
}

void UGCTracker::TellRemoved(const RecordPtr& record) {
    TellInOrder({Step::Removed, record, usageKB_});
}

void UGCTracker::TellInOrder(Step step) {
    if (!run_.empty()) {
        run_.push_back(std::move(step));
    } else {
        outbox_.Put([this, step = std::move(step)] { TellStep(step); });
    }
}
