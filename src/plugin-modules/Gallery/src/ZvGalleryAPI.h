// The hub of the module. It owns what the requests share, serves the tracker as its host, and is the one
// place that turns events into notifications for the pages.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/plugincommon/PluginModuleBase.h"
#include "common/task/StuckWork.h"
#include "libraries/share-common/HighlightsConfig.h"
#include "plugin-modules/Gallery/src/montage/RecipeSync.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/thumbnails/Thumbnailer.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

// The answer to a request that arrives while there is no tracker.
inline const KXP::RetVal kNoTracker{KXP::Code::kFailure, "No tracker", 0};

// Any thread may call any function that does not say otherwise, provided it holds no lock that the
// container's callback may need: notifications and log lines end there.
class ZvGalleryAPI : public ITrackerHost, public std::enable_shared_from_this<ZvGalleryAPI> {
  public:
    // Creates the gallery's folders and files where they are missing; throws KXP::Exception when that fails.
    // Both arguments outlive this object; `queue` is the module's.
    ZvGalleryAPI(KXP::PluginModuleBase& plugin, KXP::TaskQueue& queue);
    ZvGalleryAPI(const ZvGalleryAPI&) = delete;
    ZvGalleryAPI& operator=(const ZvGalleryAPI&) = delete;

    // If the settings could not be read so far, reads them and goes on as after a start. Fails with the
    // reason as long as they cannot be read; throws what the constructor throws. Worker.
    KXP::RetVal ReadSettingsAgain();

    // Ends montages and syncs with the cloud, until Start. Everything else goes on. Worker.
    void Cleanup();
    // Lets syncs begin again. Worker.
    void Start() { recipes_.Begin(); }

    KXP::PluginModuleBase& Plugin() { return plugin_; }
    // Opens every request that only the worker may run.
    void AssertOnWorker() const { queue_.AssertOnWorker(); }
    Settings* GetGallerySettings() override { return &settings_; }
    Announcements& GetAnnouncements() override { return announcements_; }
    PendingHighlights& GetPendingHighlights() override { return pendingHighlights_; }
    std::string GetGalleryPath() override;
    // The gallery's folder for pages, who need it even while its drive is gone. Without a "/" at its end.
    std::string GalleryPathForPages();
    // The same without waiting for its disk: if that does not answer, the stored path. Worker.
    std::string GalleryPathSoon();
    // Never null; usable for as long as the caller holds it.
    std::shared_ptr<Transcoder> GetTranscoder() const { return transcoder_; }
    montage::RecipeSync& Recipes() { return recipes_; }

    // The current tracker; null while the gallery is being changed. Usable for as long as the caller holds
    // it, even after another one has replaced it.
    std::shared_ptr<UGCTracker> GetUGCTracker() const EXCLUDES(trackerMutex_);
    // Replaces the tracker, which LeaveTracker stops first, by one for the current gallery; for
    // `useUniqueFile` see UGCTracker's constructor, which may throw. When no unique name is left, the old
    // tracker stays in force. Worker.
    void ReInitializeTracker(bool useUniqueFile, std::chrono::milliseconds limit = KXP::kStuckAfter)
        EXCLUDES(trackerMutex_);
    // Stops the tracker for good and leaves none. One that shows no progress for `limit`, because its disk
    // does not answer perhaps, is abandoned. Worker.
    void LeaveTracker(std::chrono::milliseconds limit = KXP::kStuckAfter) EXCLUDES(trackerMutex_);
    // The same, and waits for it as long as it takes. Not beside the two above.
    void EndTracker() EXCLUDES(trackerMutex_);

    // The instance is left to itself because its worker is stuck. Stops the tracker, or abandons it if it is
    // stuck too. Any thread but the worker.
    static void Abandon(const std::shared_ptr<ZvGalleryAPI>& api);

    // The tracker's lists, with the names of highlights in the user's language; 0x80004005 without a tracker.
    KXP::RetVal GetGameUGC(const std::string& game, std::vector<TrackedUGC>& out);
    KXP::RetVal GetRecentUGC(unsigned count, std::vector<TrackedUGC>& out);

    // Sets `thumbnail` to the file's picture, scaled to fit `width` by `height` pixels and never enlarged, as
    // a text that begins "data:image/png;base64,". Returns false, and logs, when the file has none. Not on
    // the worker: a decoder may take long, and only two run at a time. Sets `drawn` when ShareThumbnail is to
    // be called with it once the request is answered.
    bool GetThumbnail(const std::string& file, uint32_t width, uint32_t height,
                      const std::atomic<bool>& cancelled, ThumbnailCache::Text& thumbnail,
                      std::optional<DrawnThumbnail>& drawn);
    // Leaves a thumbnail to the desktop's programs, on a thread of its own.
    void ShareThumbnail(DrawnThumbnail drawn);
    // Sets `cancelled` and ends the GetThumbnail that was called with it.
    void CancelThumbnail(std::atomic<bool>& cancelled) { thumbnailer_.Cancel(cancelled); }

    // Questions about files, answered by their bytes; see media/.
    // Whether the file is the product's own. Returns 1, or a negative code when that cannot be determined,
    // which leaves the three texts unchanged.
    static int32_t CheckIfZv(const std::string& path, bool& isOwn);
    static int32_t CheckIfZv(const std::string& path, bool& isOwn, std::string& type, std::string& subtype,
                             std::string& source);
    static int32_t CheckIfJPGFileSizeIsValid(const std::string& path, bool& isValid);
    static bool IsDirectoryEmpty(const std::string& path, bool onlyOwn);
    // A video's duration in seconds, its audio layout and the size of its picture: the size with `wantSize`,
    // the two others without.
    static int32_t FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType,
                                     bool wantSize, unsigned int& width, unsigned int& height);
    static int32_t FindMP4DurationTypeInfo(const std::string& path, double& duration, std::string& audioType);
    static int32_t FindMP4SizeInfo(const std::string& path, unsigned int& width, unsigned int& height);

    bool CheckLowDiskSpace() override;
    void UpdateGalleryUsage(unsigned usageMB) override;

    // What the capture service and the camera announce. Worker.
    void OnCaptureSaved(std::unique_ptr<KXP::JSONMessage> message);
    void OnHighlightSaved(std::unique_ptr<KXP::JSONMessage> message);
    void OnHighlightCaptureFailed(std::unique_ptr<KXP::JSONMessage> message);
    void NotifyUGCAdded(TrackedUGC ugc, Announcements::Found announced, bool unannounced) override;

    // Sends the progress in an "UpdateMontageProgress" message on to the pages, and returns false for any
    // other message. Throws JSONFieldError when the progress is missing.
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message);

    // Notifications.
    void NotifyGalleryUpdated();
    void NotifyGalleryCapStateChange();
    void NotifyGalleryPathChange(const std::string& path);
    void NotifyGalleryTempFolderChange(const std::string& path);
    void NotifyCaptureSaved(const TrackedUGC& ugc, bool unannounced) override;
    // Puts the highlight's name in the user's language into `ugc` first.
    void NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced) override;
    void NotifyHighlightCaptureFailed(int errorCode);
    void NotifyUGCDeleted(const TrackedUGC& ugc) override;
    void NotifyTrackerUpdate(TrackerUpdateState state) override;
    void NotifyHighlightCanceled(const Highlight& highlight) override;
    // Sends the highlights with their names in the user's language.
    void NotifyOpenSummary(std::vector<TrackedUGC> highlights);
    void NotifyDiskSpaceCondition(bool low) override;
    void NotifyGalleryIsFull(bool full) override;
    // Logs and drops what cannot be sent.
    void SendNotification(std::unique_ptr<KXP::JSONMessage> message);

  private:
    // Sends the notification `name` with the payload that `write(payload, allocator, arguments...)` makes.
    template <typename Write, typename... Arguments>
    void Notify(const char* name, Write write, const Arguments&... arguments);

    // Replaces the highlight's name by that of its definition in the user's language, where both are known.
    // `caller` is for the log.
    // By application; none for one whose file cannot be read.
    using HighlightConfigs = std::map<std::string, std::optional<HighlightConfigData>>;
    static void LocalizeHighlightName(TrackedUGC& ugc, const char* caller);
    static void LocalizeHighlightName(TrackedUGC& ugc, const char* caller, HighlightConfigs& configs);
    static void LocalizeHighlightNames(std::vector<TrackedUGC>& list, const char* caller);

    bool MayWriteAbandoned();
    void StopTracker(std::chrono::milliseconds limit) EXCLUDES(trackerMutex_);
    void PutTracker(std::shared_ptr<UGCTracker> tracker) EXCLUDES(trackerMutex_);

    KXP::PluginModuleBase& plugin_;
    KXP::TaskQueue& queue_;

    // In the order in which they depend on each other; each has its own synchronisation.
    Announcements announcements_;
    PendingHighlights pendingHighlights_;
    Settings settings_;
    Thumbnailer thumbnailer_;
    montage::RecipeSync recipes_;
    // The tracker uses it until it ends.
    const std::shared_ptr<Transcoder> transcoder_ = std::make_shared<Transcoder>();
    KXP::BoundedLook galleryLook_;
    mutable KXP::Mutex trackerMutex_;
    std::shared_ptr<UGCTracker> tracker_ GUARDED_BY(trackerMutex_);
};
