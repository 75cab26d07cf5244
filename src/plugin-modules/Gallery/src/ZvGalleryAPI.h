// The hub of the module: what the endpoints call and what the tracker reports to, and the one place that
// turns events into notifications for the pages. The heavy work lies in units of their own; this class binds
// them to the running plug-in.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/plugincommon/PluginModuleBase.h"
#include "plugin-modules/Gallery/src/notifications/PendingNotifications.h"
#include "plugin-modules/Gallery/src/previews/PreviewPaths.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"
#include "plugin-modules/Gallery/src/thumbnails/Thumbnailer.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "plugin-modules/Gallery/src/transcode/Transcoder.h"

// The answer to what comes between two galleries.
inline const KXP::RetVal kNoTracker{KXP::Code::kFailure, "No tracker", 0};

// The endpoints are the worker's. Everything else may be called from any thread, with no lock held that the
// container's callback may need: notifications and log lines end there. GetHighlightInfo alone does neither.
class ZvGalleryAPI : public ITrackerHost {
  public:
    // Makes the gallery's folders and files where they are missing; throws KXP::Exception when they cannot be
    // made. Both arguments outlive this object; `queue` is the module's.
    ZvGalleryAPI(KXP::PluginModuleBase& plugin, KXP::TaskQueue& queue);
    // The last thread that uses it deletes the previews that are still remembered.
    ~ZvGalleryAPI() override;
    ZvGalleryAPI(const ZvGalleryAPI&) = delete;
    ZvGalleryAPI& operator=(const ZvGalleryAPI&) = delete;

    // Ends what goes on by itself; requests are answered as before. Worker.
    void Cleanup();

    KXP::PluginModuleBase& Plugin() { return plugin_; }
    Settings* GetGallerySettings() override { return &settings_; }
    std::string GetGalleryPath() override;
    // The tracker of now, or null between two galleries. It stays whole for who has it, also when another
    // takes its place meanwhile.
    std::shared_ptr<UGCTracker> GetUGCTracker() const EXCLUDES(trackerMutex_);
    // Stops the tracker of now for good; from then on there is none. Nobody may be about to make another.
    void EndTracker() EXCLUDES(trackerMutex_);
    // Comes up anew over the same gallery.
    void ReInitializeTracker() EXCLUDES(trackerMutex_);

    // Messages to the hub itself: true for "UpdateMontageProgress", which goes on to the pages as a
    // notification. Throws JSONFieldError when its progress is missing.
    bool HandleMsg(std::unique_ptr<KXP::JSONMessage> message);
    // The same as a request.
    KXP::RetVal UpdateMontageProgress(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);

    // Captures. The lists are those of the tracker with the highlights' names in the user's language;
    // 0x80004005 without a tracker.
    KXP::RetVal GetGameUGC(const std::string& game, std::vector<TrackedUGC>& out);
    KXP::RetVal GetRecentUGC(unsigned count, std::vector<TrackedUGC>& out);
    // What the capture service and the camera tell. Worker.
    void OnCaptureSaved(std::unique_ptr<KXP::JSONMessage> message);
    void OnHighlightSaved(std::unique_ptr<KXP::JSONMessage> message);
    void OnHighlightCaptureFailed(std::unique_ptr<KXP::JSONMessage> message);
    void NotifyUGCAdded(TrackedUGC ugc) override;
    bool GetHighlightInfo(const std::string& path, Highlight& highlight) override;

    // Highlights: one that is to come, which is answered with the id of its capture, and those of a group.
    KXP::RetVal EnqueuePendingHighlight(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                        KXP::Allocator& allocator);
    KXP::RetVal OpenHighlightsGroupSummary(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                           KXP::Allocator& allocator);
    KXP::RetVal GetHighlightsCount(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                   KXP::Allocator& allocator);
    KXP::RetVal DeleteGroupHighlights(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);

    // Previews, and the bitmap that a page leaves for other programs.
    KXP::RetVal PopulatePreviewPath(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                    KXP::Allocator& allocator);
    KXP::RetVal DeletePreview(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                              KXP::Allocator& allocator);
    KXP::RetVal WriteEncryptedBitmap(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                     KXP::Allocator& allocator);

    // Notifications.
    void NotifyGalleryUpdated();
    void NotifyGalleryCapStateChange();
    void NotifyGalleryPathChange(const std::string& path);
    void NotifyGalleryTempFolderChange(const std::string& path);
    void NotifyCaptureSaved(const TrackedUGC& ugc, bool unannounced);
    // Puts the highlight's name in the user's language into `ugc` first.
    void NotifyHighlightSaved(TrackedUGC& ugc, bool unannounced);
    void NotifyHighlightCaptureFailed(int errorCode);
    void NotifyUGCDeleted(const TrackedUGC& ugc) override;
    void NotifyTrackerUpdate(TrackerUpdateState state) override;
    void NotifyHighlightCanceled(const Highlight& highlight) override;
    void NotifyOpenSummary(const std::vector<TrackedUGC>& highlights);
    void NotifyDiskSpaceCondition(bool low) override;
    void NotifyGalleryIsFull(bool full) override;
    // Logs and drops what cannot be sent.
    void SendNotification(std::unique_ptr<KXP::JSONMessage> message);

    // Settings and capacity. What these requests throw, such as JSONFieldError for a number beyond its type
    // or Exception for a gallery whose drive is gone, becomes their answer where they are dispatched.
    KXP::RetVal GetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                            KXP::Allocator& allocator);
    KXP::RetVal SetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                            KXP::Allocator& allocator);
    KXP::RetVal CancelPathUpdate(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                 KXP::Allocator& allocator);
    KXP::RetVal CheckDiskSpace(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                               KXP::Allocator& allocator);
    bool CheckLowDiskSpace() override;
    void UpdateGalleryUsage(unsigned usageMB) override;

    // The file's picture in a box of `width` and `height` pixels, kept in aspect and never enlarged, as a
    // text that begins "data:image/png;base64,". False, and logged, for a file without one. Not on the
    // worker: it may take as long as a decoder, and waits for two others.
    bool GetThumbnail(const std::string& file, uint32_t width, uint32_t height,
                      const std::atomic<bool>& cancelled, std::string& thumbnail);
    // Sets `cancelled` and ends the GetThumbnail that was called with it.
    void CancelThumbnail(std::atomic<bool>& cancelled) { thumbnailer_.Cancel(cancelled); }

    // Never null. Stays whole for who has it.
    std::shared_ptr<Transcoder> GetTranscoder() const { return transcoder_; }
    int32_t TrimVideoFile(const std::string& input, const std::string& output, double start,
                          double length) override {
        return transcoder_->TrimVideoFile(input, output, start, length, false);
    }

    // Montages. Brings the recipes up to date with the cloud; false, and logged, when that cannot be done.
    // May take long; CloudSyncAbort ends it.
    bool RecipeCloudSync();
    KXP::RetVal CancelMontage(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                              KXP::Allocator& allocator);
    KXP::RetVal GetMontageCloudConfig(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                      KXP::Allocator& allocator);

    // What files are, by their bytes; these touch no state.

    // Whether the file is the product's own, and what it is. Gives 1, or a negative code when that could not
    // be told; the strings are then left as they were.
    static int32_t CheckIfZv(const std::string& path, bool& isOwn);
    static int32_t CheckIfZv(const std::string& path, bool& isOwn, std::string& type, std::string& subtype,
                             std::string& source);
    static bool IsDirectoryEmpty(const std::string& path, bool onlyOwn);
    // A video's duration in seconds, audio layout and picture size, as media::FindMP4HeaderInfo tells them:
    // the size with `wantSize`, the two others without.
    static int32_t FindMP4HeaderInfo(const std::string& path, double& duration, std::string& audioType,
                                     bool wantSize, unsigned int& width, unsigned int& height);
    static int32_t FindMP4DurationTypeInfo(const std::string& path, double& duration, std::string& audioType);
    static int32_t FindMP4SizeInfo(const std::string& path, unsigned int& width, unsigned int& height);

  private:
    struct SettingsProgress;

    // Sends the notification `name` with the payload that `write(payload, allocator, arguments...)` makes.
    template <typename Write, typename... Arguments>
    void Notify(const char* name, Write write, const Arguments&... arguments);

    // Replaces the highlight's name by that of its definition in the user's language, where both are known.
    // `caller` is for the log.
    static void LocalizeHighlightName(TrackedUGC& ugc, const char* caller);
    static void LocalizeHighlightNames(std::vector<TrackedUGC>& list, const char* caller);

    // Tells of a capture that was on record when its notification came.
    void TellSaved(UGCTracker& tracker, const std::string& path, bool onlyIfItWaits);
    void TellHighlightSaved(UGCTracker& tracker, const Highlight& highlight, bool unannounced);

    KXP::RetVal DeleteStyloraPreview(const std::string& path);

    // Comes up over the gallery of now, in place of the old one, which is stopped before.
    void InstallTracker(bool useUniqueFile) EXCLUDES(trackerMutex_);
    void PutTracker(std::shared_ptr<UGCTracker> tracker) EXCLUDES(trackerMutex_);
    KXP::RetVal RestoreGalleryPath();

    KXP::RetVal WriteSettingsAnswer(KXP::Value& response, KXP::Allocator& allocator);
    KXP::RetVal ApplySettings(const KXP::Value& wanted);
    KXP::RetVal ApplyGalleryPath(const std::string& path, SettingsProgress& progress);
    KXP::RetVal ChangeGalleryPath(const std::string& path, SettingsProgress& progress);
    KXP::RetVal ApplyTempFolder(const std::string& path, SettingsProgress& progress);
    void ApplyCapacity(const KXP::Value& capacity, SettingsProgress& progress);
    void ApplyCapEnabled(const KXP::Value& capacity, SettingsProgress& progress);
    bool ApplyCapPercent(const KXP::Value& capacity, SettingsProgress& progress);
    KXP::RetVal SaveSettings(const SettingsProgress& progress);

    KXP::PluginModuleBase& plugin_;
    KXP::TaskQueue& queue_;

    // In the order in which they depend on each other; each has its own synchronisation.
    PendingNotifications pendingNotifications_;
    Settings settings_;
    Thumbnailer thumbnailer_;
    std::atomic<bool> cleanedUp_{false};
    // In force before the last change; worker.
    std::string oldGalleryPath_;
    // Ahead of the tracker, which asks for it until it ends.
    const std::shared_ptr<Transcoder> transcoder_ = std::make_shared<Transcoder>();
    PreviewPaths previewPaths_;  // worker
    mutable KXP::Mutex trackerMutex_;
    std::shared_ptr<UGCTracker> tracker_ GUARDED_BY(trackerMutex_);
};
