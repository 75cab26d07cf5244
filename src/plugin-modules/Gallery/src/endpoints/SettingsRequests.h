// The requests for settings and disk space. Another gallery folder gets a tracker of its own.
#pragma once

#include <memory>
#include <string>

#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"

// Worker. Exceptions, such as JSONFieldError for a number out of range or std::runtime_error for a gallery
// that gets no tracker, become the answer.
class SettingsRequests {
  public:
    // `api` and `clock` outlive this object.
    explicit SettingsRequests(ZvGalleryAPI& api, KXP::Clock& clock = KXP::Clock::Steady())
        : api_(api), settings_(*api.GetGallerySettings()), clock_(clock), lastRead_(clock.Now()) {}

    // Takes over what other processes have written into the settings file, with the notifications that a
    // request for the same would send. All requests but CheckDiskSpace begin with it; FollowRegularly does
    // it every 1.5 seconds from now on. As long as the settings could not be read at all, it tries that every
    // 10 seconds instead.
    void Follow();
    void FollowRegularly();

    // The path is the stored one while the gallery's drive is gone.
    KXP::RetVal GetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                            KXP::Allocator& allocator);
    // Applies the gallery folder, the folder for temporary files and the capacity, in this order. What one
    // step has accepted stays in force when a later one fails; the file is written when all have succeeded.
    KXP::RetVal SetSettings(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                            KXP::Allocator& allocator);
    // Goes back to the gallery folder before the last change. On failure there is no tracker, unless it
    // failed because the disk of that folder does not answer.
    KXP::RetVal CancelPathUpdate(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                 KXP::Allocator& allocator);
    KXP::RetVal CheckDiskSpace(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                               KXP::Allocator& allocator);

  private:
    struct Progress;

    // Nothing to do once the settings are read.
    KXP::RetVal ReadAgain();
    void ReadAgainIfDue();
    void ReplaceStoppedTracker();
    void WriteSettingsAnswer(KXP::Value& response, KXP::Allocator& allocator);
    KXP::RetVal ApplySettings(const KXP::Value& wanted);
    KXP::RetVal ApplyGalleryPath(const std::string& path, Progress& progress);
    void FollowGallery(const std::string& path);
    // Sets `changed` if the gallery in force is another one, on whose disk nobody waits. `set` puts the path
    // into the settings. When the new gallery gets no tracker, the settings stay, and Follow makes
    // another tracker for the old one.
    KXP::RetVal UseGallery(const std::string& path, bool (Settings::*set)(const std::string&), bool& changed);
    KXP::RetVal ApplyTempFolder(const std::string& path, Progress& progress);
    void ApplyCapacity(const KXP::Value& capacity, Progress& progress);
    void ApplyCapEnabled(const KXP::Value& capacity, Progress& progress);
    bool ApplyCapPercent(const KXP::Value& capacity, Progress& progress);
    KXP::RetVal Save(const Progress& progress);
    KXP::RetVal RestoreGalleryPath();
    KXP::RetVal WriteSettings();

    ZvGalleryAPI& api_;
    Settings& settings_;
    KXP::Clock& clock_;
    KXP::TimePoint lastRead_;  // tried
    // In force before the last change; empty when there was none.
    std::string oldGalleryPath_;
};
