// The gallery's configuration: the folders for captures and for temporary files, the cap on the space that
// captures may take, and whether the last rebuild of the tracker was completed.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "common/json/JSONFile.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

// Any thread may call any function. Only the constructor, WriteSettings and UpdateTrackerSettings write the
// file. Sizes are decimal megabytes.
class Settings : public KXP::JSONFile {
  public:
    // Reads the file, or uses the defaults, and writes it in the current layout. Throws KXP::Exception when
    // the share folder or a default folder that is needed cannot be created.
    Settings();

    // False, with the members unchanged, when the file cannot be used. Both throw KXP::Exception when a
    // default folder is needed and cannot be created.
    bool ReadSettings() EXCLUDES(fileMutex_);
    void SetDefaults() EXCLUDES(fileMutex_);
    // Always true; a failure is logged.
    bool WriteSettings() EXCLUDES(fileMutex_);

    // In percent of the volume; any value is accepted.
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
    // The same, created if it does not exist. Throws KXP::Exception when it cannot be created, for instance
    // because its drive is unplugged.
    std::string GetGalleryPath() const EXCLUDES(pathMutex_);
    // Creates the folder if necessary and measures its volume. On failure, or when the path is not absolute,
    // returns false, leaves the path and sets the disk space to GetDriveSpace's failure value.
    bool SetUserGalleryPath(const std::string& path) EXCLUDES(pathMutex_);
    std::string GetTempFolder() const EXCLUDES(pathMutex_);
    // False for a path that is not absolute or not a folder.
    bool SetTempFolder(const std::string& path) EXCLUDES(pathMutex_);

    TrackerUpdateState GetTrackerUpdateState() const { return trackerUpdateState_; }
    void SetTrackerUpdateState(TrackerUpdateState state) { trackerUpdateState_ = state; }
    // The same, and writes the file before it returns.
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

    // Held while the file is read or written.
    KXP::OuterMutex fileMutex_ ACQUIRED_BEFORE(pathMutex_);
    mutable KXP::Mutex pathMutex_;
    std::string userGalleryPath_ GUARDED_BY(pathMutex_);
    std::string tempFolder_ GUARDED_BY(pathMutex_);
};
