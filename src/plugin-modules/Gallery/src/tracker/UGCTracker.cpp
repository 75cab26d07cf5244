// How a tracker starts and stops.
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

#include <exception>

#include "CobalixUtil.h"
#include "base/FreedMemory.h"
#include "base/Path.h"
#include "common/files/DirUtil.h"
#include "common/results/Exception.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCFileWatcherCallback.h"

namespace {

using std::chrono::steady_clock;

// How long a stop may take to put on record what is known.
constexpr std::chrono::milliseconds kStopLimit{500};
constexpr size_t kAllUnreported = SIZE_MAX;

// Support looks for this line in the log; the journal deletes stale files when it is opened.
void DeleteUniqueTrackerFiles() {
    KXP_LOG(KXP::LogFailure, "DeleteUniqueTrackerFiles not implemented");
}

// As many leave more behind at a start than it costs to look for.
constexpr size_t kManyRecords = 10000;

// A step of a stop: those after it happen in any case.
template <typename Step>
void Attempt(const Step& step) {
    try {
        step();
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "Stop tracker: %s", KXP::ExceptionText(error).c_str());
    }
}

}  // namespace

UGCTracker::UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts)
    : host_(*host),
      watcherOptions_(parts.watcher),
      place_(host->GetGalleryPath()),
      record_(host_, capacity_, KXP::CreateDirectoryPath(GetShareFolderPath()), parts.clock,
              useUniqueFile ? Rebuilding::InOneFile : Rebuilding::No),
      journal_(*this, KXP::CreateDirectoryPath(GetShareFolderPath()), gallery(), parts.clock,
               parts.sumInPassing),
      queue_("UGC_", parts.clock),
      capacity_(host_, queue_) {
    if (!useUniqueFile) DeleteUniqueTrackerFiles();
    if (journal_.Open(useUniqueFile)) {
        // The watcher starts before the gallery is walked and the worker last: changes made while the file is
        // compared are in the queue when the worker starts, after the entries of a rebuild, and none is
        // missed.
        ParseTracker(parts.watch);
    } else {
        KXP_LOG(KXP::LogMilestone, "Another process writes %s, this one follows", kTrackerFileName);
        ReadRecord();
    }
    queue_.EnqueueNotification(queue_.Now(), [this] {
        record_.SortOutKept(gallery(), stopping_);
        // That of the walk and of the file's records, some 0.15 KiB for each.
        if (record_.size() >= kManyRecords) KXP::Platform::ReturnFreedMemory();
    });
    if (parts.watch) queue_.EnqueueNotification(queue_.Now(), [this] { Follow(); });
    capacity_.MonitorDiskSpace();
    // Those that were in flight when the gallery was changed.
    for (const Highlight& highlight : host_.GetPendingHighlights().All())
        CancelLater(highlight);
    if (parts.startWorker) queue_.Start();
    news().Drain();
}

UGCTracker::~UGCTracker() {
    Stop();
}

void UGCTracker::StartWatcher(const GalleryWalk& walk) {
    WatcherOptions options = watcherOptions_;
    options.gallery = KXP::WithoutSlash(gallery());
    const std::string shareFolder = KXP::CreateDirectoryPath(GetShareFolderPath());
    std::shared_ptr<IFileWatcher> made =
        CreateFileWatcher(KXP::ParentOf(options.gallery),
                          std::make_unique<UGCFileWatcherCallback>(this, shareFolder), options, walk);
    const KXP::MutexLock lock(watcherMutex_);
    watcher_ = std::move(made);
}

std::shared_ptr<IFileWatcher> UGCTracker::Watcher() const {
    const KXP::MutexLock lock(watcherMutex_);
    return watcher_;
}

void UGCTracker::Stop() {
    if (stopping_.exchange(true)) return;
    WakeWaiting();
    DeleteUniqueTrackerFiles();
    KXP_LOG(KXP::LogMilestone, "Stop tracker");
    if (queue_.IsStarted()) Attempt([this] { EnterKnown(); });
    queue_.StopAndJoin();
    // While the watcher can still report whether there are more changes.
    Attempt([this] {
        if (news().HasUnwritten() || journal_.NeedsSum() || journal_.lastIdInFile() != record_.LastId() ||
            journal_.LinksHaveChanged())
            (void)Write(Sum::Renew);
    });
    Attempt([this] { (void)SaveKept(); });
    Attempt([this] { journal_.Close(); });
    {
        std::shared_ptr<IFileWatcher> ended;
        const KXP::MutexLock lock(watcherMutex_);
        ended.swap(watcher_);
    }
    Attempt([this] { news().Drain(); });
    stopped_ = true;
}

// The window of what was changed a moment ago would close too late.
void UGCTracker::EnterKnown() {
    const steady_clock::time_point until = steady_clock::now() + kStopLimit;
    std::optional<UnreportedPaths> unreported;
    const std::shared_ptr<IFileWatcher> watcher = Watcher();
    while (watcher && !unreported && steady_clock::now() < until)
        unreported = watcher->Unreported(kAllUnreported);
    if (!unreported) unreported.emplace();
    for (const std::vector<std::string>* paths : {&unreported->changed, &unreported->incomplete}) {
        for (const std::string& path : *paths) {
            NoteDisturbed(path);
            if (steady_clock::now() < until) EnterChange(path);
        }
    }
    for (const std::string& path : unreported->disturbed)
        NoteDisturbed(path);
    backlog_.Await(until, finishing_);
}

void UGCTracker::EnterChange(const std::string& path) {
    const GalleryPlace::Kind kind = place_.KindOf(path);
    if (kind == GalleryPlace::Kind::Capture && !IsGone(path)) {
        if (!IsSettled(path)) TrackOrLog(path);
    } else if (kind == GalleryPlace::Kind::Capture) {
        record_.Remove({path});
    } else if (kind == GalleryPlace::Kind::Game) {
        DropGoneIn(path);
        for (const FoundFile& file : ScanFolder(path).files)
            if (!IsSettled(file.path)) TrackOrLog(file.path);
    }
}
