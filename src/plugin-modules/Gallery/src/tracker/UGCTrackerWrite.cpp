// Writes of the tracker's file, and what the journal asks of the record.
#include <algorithm>
#include <chrono>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// Longer than the watcher's window, so that the changes known now have been reported by then.
constexpr std::chrono::milliseconds kReleaseDelay{1500};
// With more changes than this on their way, more will be known soon.
constexpr size_t kMostUnreported = 256;

}  // namespace

void UGCTracker::Flush() {
    if (journal_.WriteUGCToTracker(Sum::Renew).Failed()) {
        KXP_LOG(KXP::LogFailure, "UntrackFileTask: Failed to write to tracker json");
    } else {
        const KXP::MutexLock lock(mutex_);
        news_.AddAtOnce([this, usageKB = records_.usageKB()] { capacity_.UpdateGalleryUsage(usageKB); });
    }
    news_.Drain();
}

void UGCTracker::PaySum() {
    if (!journal_.OwesSum()) return;
    (void)journal_.WriteUGCToTracker(Sum::Renew);
    news_.Drain();
}

void UGCTracker::QueueRelease() {
    queue_.EnqueueNotification(queue_.Now() + kReleaseDelay, [this] {
        journal_.ReleaseSum();
        news_.Drain();
    });
}

TrackerFileWriter::Content UGCTracker::TakeContent(const TrackerFileWriter& writer) {
    const KXP::MutexLock lock(mutex_);
    news_.CoverAll();
    return {records_, writer.FirstPlace(records_)};
}

bool UGCTracker::KnowsAll() {
    if (!backlog_.IsEmpty()) return false;
    if (!watcher_) return true;
    const auto unreported = watcher_->Unreported(kMostUnreported);
    const auto isSettled = [this](const std::string& path) { return IsSettled(path); };
    return unreported && std::all_of(unreported->changed.begin(), unreported->changed.end(), isSettled) &&
           std::all_of(unreported->incomplete.begin(), unreported->incomplete.end(), isSettled);
}

// Whether the record agrees with the disk about the path.
bool UGCTracker::IsSettled(const std::string& path) const {
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) return false;
    const KXP::MutexLock lock(mutex_);
    const bool tracked = records_.FindByPath(path) != nullptr;
    if (exists) return tracked || backlog_.WasRefused(path);
    return !tracked && records_.Under(path + "/").empty();
}
