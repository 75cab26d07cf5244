// The record's way to the disk, and the news of it to the host.
#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/Exception.h"
#include "common/FileUtil.h"
#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/tracker/TrackerFile.h"
#include "plugin-modules/Gallery/src/tracker/TrackerPaths.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// Behind the watcher's window for what was known to come.
constexpr std::chrono::milliseconds kReleaseDelay{1500};

}  // namespace

UGCTracker::FileTurn::FileTurn(UGCTracker& tracker) : tracker_(tracker) {
    KXP::MutexLock lock(tracker_.mutex_);
    while (tracker_.fileTaken_)
        tracker_.turnEnded_.Wait(tracker_.mutex_);
    tracker_.fileTaken_ = true;
}

UGCTracker::FileTurn::~FileTurn() {
    {
        KXP::MutexLock lock(tracker_.mutex_);
        tracker_.fileTaken_ = false;
    }
    tracker_.turnEnded_.NotifyAll();
}

uint32_t UGCTracker::UsageKB() const {
    KXP::MutexLock lock(mutex_);
    return usageKB_;
}

bool UGCTracker::MeasureFolder(uint32_t& crc) {
    try {
        MakeGallery();
        const KXP::TimePoint start = clock_.Now();
        media::CalculateFolderCRC(gallery_, WithoutSlash(gallery_), crc);
        sumTook_ = clock_.Now() - start;
        return true;
    } catch (const std::exception&) {
        return false;  // the gallery's drive is gone
    }
}

void UGCTracker::Tell(std::function<void()> event) {
    {
        KXP::MutexLock lock(mutex_);
        TellInOrder({Step::Called, nullptr, usageKB_, std::move(event)});
    }
    outbox_.Drain();
}

void UGCTracker::FinishRun(Sum sum) {
    {
        KXP::MutexLock lock(mutex_);
        if (run_.empty()) return;
    }
    (void)WriteUGCToTracker(sum, false);
}

KXP::RetVal UGCTracker::Flush() {
    KXP::RetVal written = WriteUGCToTracker(Sum::Renew, true);
    if (written.Failed()) KXP_LOG(KXP::LogFailure, "UntrackFileTask: Failed to write to tracker json");
    outbox_.Drain();
    return written;
}

KXP::RetVal UGCTracker::WriteUGCToTracker(Sum sum, bool tellUsage) {
    FileTurn turn(*this);
    if (stopped_) return {KXP::Code::kFailure, "No tracker", 0};
    bool pending = false;
    {
        KXP::MutexLock lock(mutex_);
        pending = !run_.empty();
    }
    if (sum == Sum::Later && sumTook_ > sumInPassing_) {
        sumWithheld_ = true;
        sumOwed_ = true;
    } else if (pending || sum == Sum::Renew) {
        RenewSum(pending);
    }
    size_t steps = 0;
    KXP::RetVal written = WriteSnapshot(steps);
    TellSteps(steps, written);
    if (tellUsage && !written.Failed()) outbox_.Put([this, usage = UsageKB()] { UpdateGalleryUsage(usage); });
    return written;
}

// Before the records are taken: a file that comes between the two is in the file and not in the sum, which
// costs a rebuild after a crash, and not in the sum alone, which would lose it.
void UGCTracker::RenewSum(bool pending) {
    uint32_t crc = 0;
    {
        KXP::MutexLock lock(mutex_);
        crc = folderCRC_;
    }
    sumOwed_ = false;
    if (!MeasureFolder(crc))
        KXP_LOG(KXP::LogFailure, "%s::CRC calculation failed", pending ? "TrackUGC" : "UntrackFileTask");
    {
        KXP::MutexLock lock(mutex_);
        folderCRC_ = crc;
    }
    // The tree is summed up as it is, also with files that are not on record yet. Were the process to end
    // now, the next start would find the sum right and never look for them.
    sumWithheld_ = !KnowsAll();
    if (sumWithheld_) QueueRelease();
}

void UGCTracker::QueueRelease() {
    if (std::exchange(releaseQueued_, true)) return;
    queue_.EnqueueNotification(queue_.Now() + kReleaseDelay, [this] {
        ReleaseSum();
        outbox_.Drain();
    });
}

void UGCTracker::ReleaseSum() {
    {
        FileTurn turn(*this);
        releaseQueued_ = false;
        if (!sumWithheld_) return;
        if (!KnowsAll()) return QueueRelease();
    }
    (void)WriteUGCToTracker(Sum::Renew, false);
}

bool UGCTracker::KnowsAll() {
    if (waiting_ > 0) return false;
    if (!watcher_) return true;
    const auto untold = watcher_->Untold();
    return untold &&
           std::all_of(untold->begin(), untold->end(), [this](const auto& path) { return IsSettled(path); });
}

// Whether what is on disk at the path is what is on record.
bool UGCTracker::IsSettled(const std::string& path) const {
    if (KXP::DirectoryExists(path)) return false;
    const bool exists = KXP::FileExists(path);
    KXP::MutexLock lock(mutex_);
    const bool tracked = records_.FindByPath(path) != nullptr;
    if (exists) return tracked || refused_.count(path) > 0;
    return !tracked && records_.Under(path + "/").empty();
}

KXP::RetVal UGCTracker::WriteSnapshot(size_t& steps) {
    writer_.Recheck(trackerFile_);
    std::optional<TrackerFileWriter::Content> content;
    {
        KXP::MutexLock lock(mutex_);
        steps = run_.size();
        content.emplace(records_, writer_.FirstPlace(records_));
        content->info = {lastUGCIdUsed_, kTrackerVersion, sumWithheld_ ? ~folderCRC_ : folderCRC_};
    }
    KXP::HeldLog log;
    return writer_.Write(trackerFile_, *content, log);
}

bool UGCTracker::NeedsWrite(const Step& step) {
    return step.kind != Step::Removed && step.kind != Step::Called;
}

void UGCTracker::TellSteps(size_t count, const KXP::RetVal& written) {
    std::vector<Step> untold;
    {
        KXP::MutexLock lock(mutex_);
        // What went off the record meanwhile waits for nothing but those before it.
        while (count < run_.size() && !NeedsWrite(run_[count]))
            ++count;
        for (size_t i = 0; i < count; ++i) {
            if (written.Failed() && NeedsWrite(run_[i])) {
                untold.push_back(run_[i]);
            } else {
                outbox_.Put([this, step = run_[i]] { TellStep(step); });
            }
        }
        run_.erase(run_.begin(), run_.begin() + static_cast<std::ptrdiff_t>(count));
        runStart_ = clock_.Now();
    }
    for (const Step& step : untold) {
        if (step.kind == Step::Flushed) {
            KXP_LOG(KXP::LogFailure, "UntrackFileTask: Failed to write to tracker json");
            continue;
        }
        KXP_LOG(KXP::LogFailure, "TrackUGC::Failed to write to tracker");
        KXP_LOG(KXP::LogFailure, "Track File failed %s", KXP::ToStr(written).c_str());
    }
}

void UGCTracker::TellStep(const Step& step) {
    switch (step.kind) {
        case Step::Tick:
            host_.NotifyTrackerUpdate(TrackerUpdateInProgress);
            break;
        case Step::Silent:
            break;
        case Step::Added:
            UpdateGalleryUsage(step.usageKB);
            host_.NotifyUGCAdded(*step.record);
            break;
        case Step::Removed:
            host_.NotifyUGCDeleted(*step.record);
            break;
        case Step::Flushed:
            UpdateGalleryUsage(step.usageKB);
            break;
        case Step::Called:
            step.call();
            break;
    }
}
