#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

#include "plugin-modules/Gallery/src/media/CaptureFolder.h"
#include "plugin-modules/Gallery/src/media/Mp4Header.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

ZvGalleryAPI::ZvGalleryAPI(KXP::PluginModuleBase& plugin, KXP::TaskQueue& queue)
    : plugin_(plugin), queue_(queue) {
    // Behind all that it asks its host for.
    InstallTracker(false);
}

ZvGalleryAPI::~ZvGalleryAPI() {
    const std::set<std::string> previews = previewPaths_.All();
    for (const std::string& preview : previews)
        (void)DeleteStyloraPreview(preview);
}

void ZvGalleryAPI::Cleanup() {
    cleanedUp_ = true;
    // For a sync that looked just before.
    KXP::CloudSyncAbort();
    StopAndJoinFileWatcher();
    // Within the time that the queue waits for the task.
    transcoder_->EndMontages(std::chrono::milliseconds(500));
}

std::shared_ptr<UGCTracker> ZvGalleryAPI::GetUGCTracker() const {
    KXP::MutexLock lock(trackerMutex_);
    return tracker_;
}

void ZvGalleryAPI::PutTracker(std::shared_ptr<UGCTracker> tracker) {
    KXP::MutexLock lock(trackerMutex_);
    tracker_.swap(tracker);
}

void ZvGalleryAPI::InstallTracker(bool useUniqueFile) {
    // Before the new one begins, and not with whoever still has it: two at work would spoil each other's
    // files, and the old one's last entry would call the new one's scan complete. It can be asked meanwhile.
    if (const std::shared_ptr<UGCTracker> old = GetUGCTracker()) old->Stop();
    PutTracker(std::make_shared<UGCTracker>(this, useUniqueFile));
}

void ZvGalleryAPI::EndTracker() {
    if (const std::shared_ptr<UGCTracker> old = GetUGCTracker()) old->Stop();
    PutTracker(nullptr);
}

void ZvGalleryAPI::ReInitializeTracker() {
    InstallTracker(false);
}

std::string ZvGalleryAPI::GetGalleryPath() {
    std::string path = settings_.GetGalleryPath();
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

bool ZvGalleryAPI::GetThumbnail(const std::string& file, uint32_t width, uint32_t height,
                                const std::atomic<bool>& cancelled, std::string& thumbnail) {
    std::string error;
    const ThumbnailCache::Text text = thumbnailer_.Make(file, width, height, cancelled, error);
    if (!text) {
        KXP_LOG(KXP::LogDetail, "No thumbnail of %s: %s", file.c_str(), error.c_str());
        return false;
    }
    thumbnail = *text;
    return true;
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
