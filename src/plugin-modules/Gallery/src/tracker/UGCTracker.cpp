// How a tracker comes up, rebuilds and goes down.
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

#include <random>
#include <stdexcept>

#include "CobalixUtil.h"
#include "common/DirUtil.h"
#include "common/Exception.h"
#include "common/FileUtil.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"
#include "plugin-modules/Gallery/src/tracker/TrackerFile.h"
#include "plugin-modules/Gallery/src/tracker/TrackerPaths.h"
#include "plugin-modules/Gallery/src/tracker/UGCFileWatcherCallback.h"

namespace {

constexpr int kUniqueNames = 100;

KXP::RetVal GenerateUniqueTrackerFileName(const std::string& shareFolder, std::string& name) {
    // Not rand(): its sequence is the client's, and the same in every start.
    std::random_device random;
    for (int attempt = 0; attempt < kUniqueNames; ++attempt) {
        const std::string candidate = UniqueTrackerFileName(random() % kUniqueNames);
        if (KXP::FileExists(shareFolder + "/" + candidate)) {
            KXP_LOG(KXP::LogDetail, "File already exists");
            continue;
        }
        KXP_LOG(KXP::LogDetail, "File is unique");
        name = candidate;
        return {};
    }
    return {KXP::Code::kFailure, "Unable to create unique tracker file name", 0};
}

// What a crash or a cancelled change of folder has left. The line in the log is what support looks for.
void DeleteUniqueTrackerFiles() {
    KXP_LOG(KXP::LogFailure, "DeleteUniqueTrackerFiles not implemented");
}

void RemoveStaleTrackerFiles(const std::string& shareFolder) {
    for (int number = 0; number < kUniqueNames; ++number) {
        const std::string path = shareFolder + "/" + UniqueTrackerFileName(number);
        if (KXP::FileExists(path)) KXP::FileDelete(path, true);
    }
}

}  // namespace

UGCTracker::UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts)
    : host_(*host),
      clock_(parts.clock),
      shareFolder_(KXP::CreateDirectoryPath(GetShareFolderPath())),
      gallery_(host->GetGalleryPath()),
      sumInPassing_(parts.sumInPassing),
      updateInProgress_(useUniqueFile),
      replaceTrackerFile_(useUniqueFile),
      queue_("UGC_", parts.clock) {
    OpenFile(useUniqueFile);
    // Watched first and worked off last: what changes while the file is read and compared is in the queue
    // when the worker starts, behind what a rebuild has queued, and nothing falls between.
    if (parts.watch) StartWatcher(parts.watcher);
    ParseTracker();
    MonitorDiskSpace();
    if (parts.startWorker) queue_.Start();
    outbox_.Drain();
}

UGCTracker::~UGCTracker() {
    Stop();
}

void UGCTracker::OpenFile(bool useUniqueFile) {
    std::string name = kTrackerFileName;
    if (!useUniqueFile) {
        DeleteUniqueTrackerFiles();
        RemoveStaleTrackerFiles(shareFolder_);
    } else if (GenerateUniqueTrackerFileName(shareFolder_, name).Failed()) {
        throw std::runtime_error("Failed to generate unique tracker name, cannot reset tracker file");
    }
    trackerFile_.Init(shareFolder_ + "/" + name);
}

void UGCTracker::StartWatcher(WatcherOptions options) {
    options.gallery = WithoutSlash(gallery_);
    watcher_ = CreateFileWatcher(ParentOf(options.gallery), true,
                                 std::make_unique<UGCFileWatcherCallback>(this, shareFolder_), options);
}

void UGCTracker::Stop() {
    if (stopping_.exchange(true)) return;
    DeleteUniqueTrackerFiles();
    KXP_LOG(KXP::LogMilestone, "Stop tracker");
    queue_.StopAndJoin();
    // While the watcher can still say whether there is more to come.
    FinishRun(Sum::Renew);
    PaySum();
    {
        FileTurn turn(*this);
        watcher_.reset();
        stopped_ = true;
        // A change of folder that was cancelled: nobody will ever read what it has gathered.
        if (replaceTrackerFile_ && KXP::FileExists(trackerFile_.path()))
            KXP::FileDelete(trackerFile_.path(), true);
    }
    outbox_.Drain();
}

void UGCTracker::ParseTracker() {
    KXP::Document document;
    if (trackerFile_.ReadAndParseJSON(document).Failed())
        return Rebuild("ParseTracker::rebuilding from GalleryPath");

    TrackerInfo info;
    ParseTrackerInfoFromJSON(document, info);
    {
        KXP::MutexLock lock(mutex_);
        lastUGCIdUsed_ = info.lastUGCIdUsed;
        folderCRC_ = info.folderCRC;
    }
    if (info.version != kTrackerVersion ||
        host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateInProgress)
        return Rebuild("ParseTracker::rebuilding from GalleryPath");

    uint32_t usageKB = 0;
    if (!LoadRecords(document, usageKB)) return;
    uint32_t calculated = UINT32_MAX;
    const bool measured = MeasureFolder(calculated);
    KXP_LOG(KXP::LogMilestone, "CRC Check: Tracker value: %s, calculated value: %s",
            std::to_string(info.folderCRC).c_str(), std::to_string(calculated).c_str());
    if (!measured || calculated != info.folderCRC) {
        Rebuild("ParseTracker::Folder CRC mismatch, rebuilding from GalleryPath");
        usageKB = 0;
    }
    UpdateGalleryUsage(usageKB);
}

bool UGCTracker::LoadRecords(const KXP::Value& document, uint32_t& usageKB) {
    std::vector<TrackedUGC> records;
    if (ParseUGCFromJSON(document, records, usageKB).Failed()) {
        KXP_LOG(KXP::LogFailure, "ParseTracker::Failed to parse UGC from tracker");
        return false;
    }
    TrackedUGCGames games;
    const bool parsed = !ParseUGCGamesFromJSON(document, games).Failed();
    if (!parsed) KXP_LOG(KXP::LogFailure, "ParseTracker::Failed to parse Games from tracker");
    KXP::MutexLock lock(mutex_);
    records_.Load(std::move(records), std::move(games));
    usageKB_ = usageKB;
    return parsed;
}

void UGCTracker::Rebuild(const char* reason) {
    {
        KXP::MutexLock lock(mutex_);
        records_.Clear();
        lastUGCIdUsed_ = 0;
        usageKB_ = 0;
    }
    KXP_LOG(KXP::LogMilestone, "%s", reason);
    if (UpdateTracker().Failed()) KXP_LOG(KXP::LogFailure, "ParseTracker::Failed to update tracker");
}

void UGCTracker::MakeGallery() const {
    KXP::CreateDirectoryPath({gallery_});
}

KXP::RetVal UGCTracker::UpdateTracker() {
    MakeGallery();
    const std::vector<std::string> files = ScanGallery(gallery_);
    // On disk before the first file is queued: whatever ends the process now, the next start rebuilds.
    host_.GetGallerySettings()->UpdateTrackerSettings(TrackerUpdateInProgress);
    // The scan has seen what each is and where it lies.
    for (const std::string& path : files)
        if (!ignoreList_.Has(path)) EnqueueTrack(path);
    if (updateInProgress_) queue_.EnqueueNotification(queue_.Now(), [this] { FinishRebuild(); });
    queue_.EnqueueNotification(queue_.Now(), [this] {
        host_.GetGallerySettings()->UpdateTrackerSettings(TrackerUpdateComplete);
        KXP_LOG(KXP::LogMilestone, "Tracker update done");
    });
    return {};
}

void UGCTracker::FinishRebuild() {
    queue_.AssertOnWorker();
    if (replaceTrackerFile_) TakeOverTrackerFile();
    std::vector<TrackedUGC> all;
    {
        KXP::MutexLock lock(mutex_);
        for (const RecordPtr& record : records_.Snapshot())
            all.push_back(*record);
    }
    if (SanitizeUGC(all).Failed()) KXP_LOG(KXP::LogFailure, "UpdateTracker::Failed to sanitize UGC");
    outbox_.Put([this] {
        UpdateGalleryUsage(UsageKB());
        host_.NotifyTrackerUpdate(TrackerUpdateComplete);
    });
    outbox_.Drain();
    updateInProgress_ = false;
}

void UGCTracker::TakeOverTrackerFile() {
    const std::string canonical = shareFolder_ + "/" + kTrackerFileName;
    FileTurn turn(*this);
    if (trackerFile_.path() != canonical && KXP::FileExists(trackerFile_.path())) {
        if (KXP::FileMove(trackerFile_.path(), canonical) < 0)
            KXP_LOG(KXP::LogFailure, "UpdateTracker::Failed to set tracker, no tracker UGC this lifecycle");
    } else {
        KXP::FileDelete(canonical, true);
    }
    trackerFile_.Init(canonical);
    replaceTrackerFile_ = false;
}

KXP::RetVal UGCTracker::DeleteTrackerFile() {
    FileTurn turn(*this);
    (void)trackerFile_.RemoveFile();
    return {};
}
