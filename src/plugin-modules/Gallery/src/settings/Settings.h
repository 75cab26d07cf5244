// The gallery's small configuration: where captures and temporary files live, the cap on what they may take,
// and how far the last rebuild of the tracker came.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "common/JSONFile.h"
#include "common/Mutex.h"
#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

// Any thread may call any function. Nothing but the constructor, WriteSettings and UpdateTrackerSettings
// writes the file. Sizes are decimal megabytes.
class Settings : public KXP::JSONFile {
  public:
    // Reads the file, or takes the defaults, and writes it in the layout of today. Throws KXP::Exception when
    // neither the share folder nor a needed default folder can be made.
    Settings();

    // False, with the members as they were, when the file cannot be used. Throws KXP::Exception, as
    // SetDefaults does, when a default folder is needed and cannot be made.
    bool ReadSettings() EXCLUDES(fileMutex_);
    void SetDefaults() EXCLUDES(fileMutex_);
    // Always true; a failure is in the log.
    bool WriteSettings() EXCLUDES(fileMutex_);

    // In percent of the volume; any value is kept as it is.
    unsigned GetMaxSizePercent() const { return maxSizePercent_; }
    void SetMaxSizePercent(unsigned percent) { maxSizePercent_ = percent; }
    unsigned GetCurrentSizeMB() const { return currentSizeMB_; }
    void SetCurrentSizeMB(unsigned size) { currentSizeMB_ = size; }
    unsigned GetTotalDiskSpaceMB() const { return totalDiskSpaceMB_; }
    void SetTotalDiskSpaceMB(unsigned size) { totalDiskSpaceMB_ = size; }
    bool GetCapEnabled() const { return capEnabled_; }
    void SetCapEnabled(bool enabled) { capEnabled_ = enabled; }

    // The folder as the user gave it.
    std::string GetUserGalleryPath() const EXCLUDES(pathMutex_);
    // The same, made when it is not there. Throws KXP::Exception when it cannot be made, as when its drive is
    // unplugged.
    std::string GetGalleryPath() const EXCLUDES(pathMutex_);
    // Makes the folder and measures its volume. False, with the path as it was and GetTotalDiskSpaceMB at
    // GetDriveSpace's failure value, when that cannot be done or the path is not absolute.
    bool SetUserGalleryPath(const std::string& path) EXCLUDES(pathMutex_);
    std::string GetTempFolder() const EXCLUDES(pathMutex_);
    // False for a path that is not absolute or leads to no folder.
    bool SetTempFolder(const std::string& path) EXCLUDES(pathMutex_);

    TrackerUpdateState GetTrackerUpdateState() const { return trackerUpdateState_; }
    void SetTrackerUpdateState(TrackerUpdateState state) { trackerUpdateState_ = state; }
    // The same, and on disk before it returns.
    bool UpdateTrackerSettings(TrackerUpdateState state) EXCLUDES(fileMutex_);

    static std::string GetDefaultGalleryFolderPath();
    static std::vector<std::string> GetDefaultGalleryFolder();
    static std::string GetDefaultTempFolder();

  private:
    bool ReadFile(KXP::Document& document) EXCLUDES(fileMutex_);
    void Store(const StoredSettings& stored, uint32_t totalDiskSpaceMB) EXCLUDES(fileMutex_, pathMutex_);
    StoredSettings Stored() const EXCLUDES(pathMutex_);

    std::atomic<uint32_t> maxSizePercent_{0};
    std::atomic<uint32_t> totalDiskSpaceMB_{0};
    std::atomic<uint32_t> currentSizeMB_{0};
    std::atomic<bool> capEnabled_{false};
    std::atomic<TrackerUpdateState> trackerUpdateState_{TrackerUpdateNotActive};

    // Held for each use of the file as a whole, and taken before pathMutex_.
    KXP::Mutex fileMutex_ ACQUIRED_BEFORE(pathMutex_);
    mutable KXP::Mutex pathMutex_;
    std::string userGalleryPath_ GUARDED_BY(pathMutex_);
    std::string tempFolder_ GUARDED_BY(pathMutex_);
};
