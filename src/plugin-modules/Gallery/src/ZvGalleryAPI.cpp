#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

#include <cerrno>
#include <stdexcept>

#include "CobalixUtil.h"
#include "base/FileLock.h"
#include "base/PartFiles.h"
#include "common/drives/Drives.h"
#include "common/files/DirUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "common/task/StuckWork.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/editing/InterruptedEdits.h"
#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

constexpr uint32_t kLowDiskMB = 300;

struct DriveSpace {
    bool measured = false;
    uint32_t freeMB = 0;
    uint32_t totalMB = 0x7FFFFFFF;  // the value of a volume that cannot be measured

    bool IsLow() const { return measured && freeMB < kLowDiskMB; }
};

DriveSpace SpaceAt(const std::string& path) {
    DriveSpace space;
    space.measured = KXP::GetDriveSpace(path, space.freeMB, space.totalMB);
    return space;
}

// What processes that were killed have left in the middle of their work on files.
void SettleInterruptedWork() {
    FinishInterruptedEdits(KXP::CreateDirectoryPath(GetShareFolderPath()));
    if (const int removed = KXP::RemoveAbandonedParts())
        KXP_LOG(KXP::LogMilestone, "Removed %d files that were not complete", removed);
}

}  // namespace

ZvGalleryAPI::ZvGalleryAPI(KXP::PluginModuleBase& plugin, KXP::TaskQueue& queue)
    : plugin_(plugin), queue_(queue) {
    settings_.AskOnceAbandoned([this] { return MayWriteAbandoned(); });
    SettleInterruptedWork();
    // Last: the tracker uses this object from its start on. Without settings nobody knows the gallery.
    if (settings_.IsRead()) ReInitializeTracker(false);
}

KXP::RetVal ZvGalleryAPI::ReadSettingsAgain() {
    if (settings_.IsRead()) return {};
    if (!settings_.ReadAgain()) return settings_.ReadFailure();
    ReInitializeTracker(false);
    return {};
}

void ZvGalleryAPI::Cleanup() {
    recipes_.End();
    StopAndJoinFileWatcher();
    // Shorter than the time that the queue waits for the task. Later requests for montages wait for the
    // start.
    transcoder_->CancelMontage(std::chrono::milliseconds(500));
}

std::shared_ptr<UGCTracker> ZvGalleryAPI::GetUGCTracker() const {
    KXP::MutexLock lock(trackerMutex_);
    return tracker_;
}

void ZvGalleryAPI::PutTracker(std::shared_ptr<UGCTracker> tracker) {
    KXP::MutexLock lock(trackerMutex_);
    tracker_.swap(tracker);
}

void ZvGalleryAPI::ReInitializeTracker(bool useUniqueFile, std::chrono::milliseconds limit) {
    if (plugin_.IsAbandoned()) throw std::runtime_error("The plug-in has ended");
    if (useUniqueFile && !HasUniqueTrackerFileName(KXP::CreateDirectoryPath(GetShareFolderPath())))
        throw std::runtime_error("Failed to generate unique tracker name, cannot reset tracker file");
    // The old tracker is stopped before the new one begins, whoever still holds it: two at work would spoil
    // each other's files, and the old one's last entry would report the new one's scan as complete. It can
    // still be asked meanwhile.
    StopTracker(limit);
    PutTracker(std::make_shared<UGCTracker>(this, useUniqueFile));
}

void ZvGalleryAPI::LeaveTracker(std::chrono::milliseconds limit) {
    StopTracker(limit);
    PutTracker(nullptr);
}

void ZvGalleryAPI::StopTracker(std::chrono::milliseconds limit) {
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (!tracker) return;
    // An abandoned tracker uses this object, and that the module.
    const auto stop = [hub = weak_from_this().lock(), tracker] { tracker->Stop(); };
    if (KXP::RunUnlessStuck(stop, tracker->progress(), queue_.Owner(), limit)) return;
    KXP_LOG(KXP::LogFailure, "The gallery %s does not answer, and its tracker is left to itself",
            tracker->gallery().c_str());
    tracker->Abandon();
}

void ZvGalleryAPI::Abandon(const std::shared_ptr<ZvGalleryAPI>& api) {
    api->settings_.Abandon();
    const std::shared_ptr<UGCTracker> tracker = api->GetUGCTracker();
    if (!tracker) return;
    const std::atomic<uint64_t> none{0};
    (void)KXP::RunUnlessStuck([tracker] { tracker->Stop(); }, none, api);
    // Also where another thread has begun to stop it, and is stuck there.
    if (!tracker->HasStopped()) tracker->Abandon();
}

// Whether this instance may write the settings although it was abandoned.
bool ZvGalleryAPI::MayWriteAbandoned() {
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (tracker && tracker->MayWrite()) return true;
    const KXP::FileLock share(settings_.directory() + "/" + kTrackerLockName, std::chrono::milliseconds(0));
    return share.IsHeld() || errno != EWOULDBLOCK;
}

void ZvGalleryAPI::EndTracker() {
    if (const std::shared_ptr<UGCTracker> old = GetUGCTracker()) old->Finish();
    PutTracker(nullptr);
}

std::string ZvGalleryAPI::GetGalleryPath() {
    std::string path = settings_.GetGalleryPath();
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

std::string ZvGalleryAPI::GalleryPathForPages() {
    if (!settings_.IsRead()) return settings_.GetUserGalleryPath();
    try {
        return settings_.GetGalleryPath();
    } catch (const std::exception& error) {
        KXP_LOG(KXP::LogFailure, "Gallery folder is gone: %s", KXP::ExceptionText(error).c_str());
        return settings_.GetUserGalleryPath();
    }
}

std::string ZvGalleryAPI::GalleryPathSoon() {
    if (const std::optional<std::string> known = settings_.KnownGalleryPath()) return *known;
    const auto path = std::make_shared<std::string>();
    const auto look = [this, hub = weak_from_this().lock(), path] { *path = GalleryPathForPages(); };
    return galleryLook_.Run(look, queue_.Owner()) ? *path : settings_.GetUserGalleryPath();
}

bool ZvGalleryAPI::GetThumbnail(const std::string& file, uint32_t width, uint32_t height,
                                const std::atomic<bool>& cancelled, ThumbnailCache::Text& thumbnail,
                                std::optional<DrawnThumbnail>& drawn) {
    std::string error;
    thumbnail = thumbnailer_.Make(file, width, height, cancelled, drawn, error);
    if (!thumbnail) {
        KXP_LOG(KXP::LogDetail, "No thumbnail of %s: %s", file.c_str(), error.c_str());
        return false;
    }
    // Other programs need not learn which files outside of the gallery were looked at.
    const std::shared_ptr<UGCTracker> tracker = GetUGCTracker();
    if (drawn && !(tracker && tracker->IsTrackedFile(file))) drawn.reset();
    return true;
}

void ZvGalleryAPI::ShareThumbnail(DrawnThumbnail drawn) {
    const auto shared = std::make_shared<const DrawnThumbnail>(std::move(drawn));
    queue_.ExecuteAsync(
        [shared] {
            Thumbnailer::Share(*shared);
            return KXP::TaskStatusDone;
        },
        queue_.Now(), "");
}

int32_t ZvGalleryAPI::CheckIfZv(const std::string& path, bool& isOwn) {
    media::SniffResult result;
    const int32_t code = media::SniffFile(path, result);
    isOwn = result.isOwn;
    return code;
}

int32_t ZvGalleryAPI::CheckIfZv(const std::string& path, bool& isOwn, std::string& type, std::string& subtype,
                                std::string& source) {
    media::SniffResult result;
    const int32_t code = media::SniffFile(path, result);
    isOwn = result.isOwn;
    if (code < 0) return code;
    type = result.fileType;
    subtype = result.fileSubType;
    source = result.fileSource;
    return code;
}

int32_t ZvGalleryAPI::CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid) {
    return media::CheckIfJPGFileSizeIsValid(path, isValid);
}

bool ZvGalleryAPI::IsDirectoryEmpty(const std::string& path, bool onlyOwn) {
    return media::IsDirectoryEmpty(path, onlyOwn);
}

int32_t ZvGalleryAPI::FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType,
                                        bool wantSize, unsigned int& width, unsigned int& height) {
    return media::FindMP4HeaderInfo(path, duration, audioType, wantSize, width, height);
}

int32_t ZvGalleryAPI::FindMP4DurationTypeInfo(const std::string& path, double& duration,
                                              std::string& audioType) {
    unsigned int width = 0;
    unsigned int height = 0;
    return FindMP4HeaderInfo(path, duration, audioType, false, width, height);
}

int32_t ZvGalleryAPI::FindMP4SizeInfo(const std::string& path, unsigned int& width, unsigned int& height) {
    double duration = 0;
    std::string audioType;
    return FindMP4HeaderInfo(path, duration, audioType, true, width, height);
}

bool ZvGalleryAPI::CheckLowDiskSpace() {
    const DriveSpace system = SpaceAt(KXP::GetSpecialDirectory(KXP::SD_HOME));
    DriveSpace gallery;
    try {
        gallery = SpaceAt(GetGalleryPath());
    } catch (const std::exception& error) {
        // A gallery whose drive is gone does not count as low.
        KXP_LOG(KXP::LogFailure, "Gallery folder is gone: %s", KXP::ExceptionText(error).c_str());
    }
    KXP_LOG(KXP::LogMilestone,
            "%s systemTotalSpaceMB[%d] systemFreeSpaceMB = %d, galleryTotalSpaceMB[%d] galleryFreeSpaceMB = "
            "%d",
            "CheckLowDiskSpace", system.totalMB, system.freeMB, gallery.totalMB, gallery.freeMB);
    return system.IsLow() || gallery.IsLow();
}

void ZvGalleryAPI::UpdateGalleryUsage(unsigned usageMB) {
    settings_.SetCurrentSizeMB(usageMB);
    NotifyGalleryUpdated();
}
