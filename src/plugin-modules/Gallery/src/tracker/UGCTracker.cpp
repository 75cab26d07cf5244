// How a tracker starts, rebuilds and stops.
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"
#include "plugin-modules/Gallery/src/tracker/UGCFileWatcherCallback.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

// Support looks for this line in the log; the journal deletes stale files when it is opened.
void DeleteUniqueTrackerFiles() {
    KXP_LOG(KXP::LogFailure, "DeleteUniqueTrackerFiles not implemented");
}

}  // namespace

UGCTracker::UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts)
    : host_(*host),
      gallery_(host->GetGalleryPath()),
      announcements_(host->GetAnnouncements()),
      news_(parts.clock),
      journal_(*this, KXP::CreateDirectoryPath(GetShareFolderPath()), gallery_, parts.clock,
               parts.sumInPassing),
      rebuilding_(useUniqueFile ? Rebuilding::InOneFile : Rebuilding::No),
      queue_("UGC_", parts.clock),
      capacity_(host_, queue_) {
    if (!useUniqueFile) DeleteUniqueTrackerFiles();
    journal_.Open(useUniqueFile);
    // The watcher starts first and the worker last: changes made while the file is read and compared are in
    // the queue when the worker starts, after the entries of a rebuild, and none is missed.
    if (parts.watch) StartWatcher(parts.watcher);
    ParseTracker();
    capacity_.MonitorDiskSpace();
    if (parts.startWorker) queue_.Start();
    news_.Drain();
}

UGCTracker::~UGCTracker() {
    Stop();
}

void UGCTracker::StartWatcher(WatcherOptions options) {
    options.gallery = KXP::WithoutSlash(gallery_);
    const std::string shareFolder = KXP::CreateDirectoryPath(GetShareFolderPath());
    watcher_ = CreateFileWatcher(KXP::ParentOf(options.gallery),
                                 std::make_unique<UGCFileWatcherCallback>(this, shareFolder), options);
}

void UGCTracker::Stop() {
    if (stopping_.exchange(true)) return;
    WakeWaiting();
    DeleteUniqueTrackerFiles();
    KXP_LOG(KXP::LogMilestone, "Stop tracker");
    queue_.StopAndJoin();
    // While the watcher can still report whether there are more changes.
    if (news_.HasUnwritten()) (void)journal_.WriteUGCToTracker(Sum::Renew);
    PaySum();
    journal_.Close();
    watcher_.reset();
    news_.Drain();
}

void UGCTracker::ParseTracker() {
    KXP::Document document;
    TrackerInfo info;
    // If the settings still say that a rebuild is in progress, an earlier start did not finish it.
    if (journal_.Read(document, info).Failed() || info.version != kTrackerVersion ||
        host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateInProgress)
        return Rebuild("ParseTracker::rebuilding from GalleryPath");

    if (!LoadRecords(document, info.lastUGCIdUsed)) return;
    uint32_t calculated = UINT32_MAX;
    const bool measured = journal_.MeasureFolder(calculated);
    KXP_LOG(KXP::LogMilestone, "CRC Check: Tracker value: %s, calculated value: %s",
            std::to_string(info.folderCRC).c_str(), std::to_string(calculated).c_str());
    if (!measured || calculated != info.folderCRC)
        Rebuild("ParseTracker::Folder CRC mismatch, rebuilding from GalleryPath");
    uint32_t usageKB = 0;
    {
        const KXP::MutexLock lock(mutex_);
        usageKB = records_.usageKB();
    }
    capacity_.UpdateGalleryUsage(usageKB);
}

bool UGCTracker::LoadRecords(const KXP::Value& document, int32_t lastId) {
    std::vector<TrackedUGC> records = ParseUGCFromJSON(document);
    TrackedUGCGames games;
    const bool parsed = !ParseUGCGamesFromJSON(document, games).Failed();
    if (!parsed) KXP_LOG(KXP::LogFailure, "ParseTracker::Failed to parse Games from tracker");
    const KXP::MutexLock lock(mutex_);
    records_.Load(std::move(records), std::move(games), lastId);
    return parsed;
}

void UGCTracker::Rebuild(const char* reason) {
    {
        const KXP::MutexLock lock(mutex_);
        records_.Clear();
    }
    KXP_LOG(KXP::LogMilestone, "%s", reason);
    UpdateTracker();
}

void UGCTracker::UpdateTracker() {
    KXP::CreateDirectoryPath({gallery_});
    const std::vector<std::string> files = ScanGallery(gallery_);
    Rebuilding none = Rebuilding::No;
    rebuilding_.compare_exchange_strong(none, Rebuilding::Silently);
    // Written before the first file is queued, so that the next start rebuilds if the process ends now.
    host_.GetGallerySettings()->UpdateTrackerSettings(TrackerUpdateInProgress);
    // Without TrackFile's checks of kind and folder, which the scan has made.
    for (const std::string& path : files)
        if (!ignoreList_.Has(path)) EnqueueTrack(path);
    if (rebuilding_ == Rebuilding::InOneFile)
        queue_.EnqueueNotification(queue_.Now(), [this] { FinishRebuild(); });
    queue_.EnqueueNotification(queue_.Now(), [this] {
        rebuilding_ = Rebuilding::No;
        host_.GetGallerySettings()->UpdateTrackerSettings(TrackerUpdateComplete);
        KXP_LOG(KXP::LogMilestone, "Tracker update done");
    });
}

void UGCTracker::FinishRebuild() {
    queue_.AssertOnWorker();
    journal_.TakeOver();
    std::vector<TrackedUGC> all;
    {
        const KXP::MutexLock lock(mutex_);
        for (const RecordPtr& record : records_.Snapshot())
            all.push_back(*record);
    }
    SanitizeUGC(all);
    {
        const KXP::MutexLock lock(mutex_);
        news_.AddAtOnce([this, usageKB = records_.usageKB()] {
            capacity_.UpdateGalleryUsage(usageKB);
            host_.NotifyTrackerUpdate(TrackerUpdateComplete);
        });
    }
    news_.Drain();
    rebuilding_ = Rebuilding::Silently;
}
