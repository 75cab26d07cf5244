// The gallery's configuration: the folders for captures and for temporary files, the cap on the space that
// captures may take, and whether the last rebuild of the tracker was completed.
//
// Several processes may use the same file. Each write happens under a lock on a file beside it: it reads the
// file again, replaces the values that were set here since the last write, and keeps the others as they are
// in the file. FollowFile notices what other processes have written.
//
// While the file cannot be read for a reason that may pass, such as a lack of descriptors, nothing is
// written. If that is so from the start on, the values are the defaults, there is no gallery, and ReadAgain
// is called until it succeeds.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/FileLock.h"
#include "common/json/JSONFile.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/settings/SettingsJson.h"

// Any thread may call any function. Only the constructor, ReadAgain, WriteSettings and UpdateTrackerSettings
// write the file. Sizes are decimal megabytes.
class Settings : public KXP::JSONFile {
  public:
    // Reads the file, or uses the defaults, and writes it in the current layout. Throws KXP::Exception when
    // the share folder or a default folder that is needed cannot be created.
    Settings();

    // The instance is left to itself: from now on the file is only written if it is as this object read or
    // wrote it last and `mayWrite`, which was set before other threads used the settings, allows it. Does not
    // wait.
    void Abandon() { abandoned_ = true; }
    void AskOnceAbandoned(std::function<bool()> mayWrite) { mayWrite_ = std::move(mayWrite); }

    // Whether the file was read, or has been replaced by the defaults.
    bool IsRead() const { return isRead_; }
    // Does what the constructor could not do. True when it is done, now or before. Throws what the
    // constructor throws. One thread at a time.
    bool ReadAgain() EXCLUDES(fileMutex_);
    // Why the last attempt to read the file failed, if the reason may pass: 0x80004005 with a text.
    KXP::RetVal ReadFailure() const EXCLUDES(fileMutex_);

    // False, with the values unchanged, when the file cannot be used. Both throw KXP::Exception when a
    // default folder is needed and cannot be created.
    bool ReadSettings() EXCLUDES(fileMutex_);
    void SetDefaults() EXCLUDES(mutex_);
    // Writes what was set since the last write. Always true; a failure is logged, and the next write tries
    // again.
    bool WriteSettings() EXCLUDES(fileMutex_);

    // Takes over what other processes have written since the last call and returns which values are new. The
    // gallery folder alone is left to the caller, who gets it in `galleryPath`. Costs one stat while the file
    // is unchanged.
    SettingsSet FollowFile(std::string& galleryPath) EXCLUDES(fileMutex_);

    // In percent of the volume; any value is accepted.
    // All that is stored, at one moment.
    StoredSettings GetStored() const EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        return stored_;
    }
    unsigned GetMaxSizePercent() const { return Get(&StoredSettings::maxSizePercent); }
    void SetMaxSizePercent(unsigned percent) {
        Set(kMaxSizePercent, &StoredSettings::maxSizePercent, percent);
    }
    unsigned GetCurrentSizeMB() const { return currentSizeMB_; }
    void SetCurrentSizeMB(unsigned size) { currentSizeMB_ = size; }
    unsigned GetTotalDiskSpaceMB() const { return totalDiskSpaceMB_; }
    void SetTotalDiskSpaceMB(unsigned size) { totalDiskSpaceMB_ = size; }
    bool GetCapEnabled() const { return Get(&StoredSettings::capEnabled); }
    void SetCapEnabled(bool enabled) { Set(kCapEnabled, &StoredSettings::capEnabled, enabled); }

    // The folder as the user gave it.
    std::string GetUserGalleryPath() const { return Get(&StoredSettings::userGalleryPath); }
    // The same, created if it does not exist. Throws KXP::Exception when it cannot be created, when the
    // settings are not read, and when the drive that it was on is gone: a folder made at the mount point
    // would hide the captures when the drive comes back.
    std::string GetGalleryPath() EXCLUDES(mutex_);
    // The same without waiting for a disk: none where that has to be asked, or the folder made.
    std::optional<std::string> KnownGalleryPath() const EXCLUDES(mutex_);
    // Creates the folder if necessary and measures its volume. On failure, or when the path is not absolute,
    // returns false, leaves the path and sets the disk space to GetDriveSpace's failure value.
    bool SetUserGalleryPath(const std::string& path) EXCLUDES(mutex_);
    // The same for a path that FollowFile has returned; no later write counts it as set here.
    bool AdoptUserGalleryPath(const std::string& path) EXCLUDES(mutex_);

    // What SetUserGalleryPath changes, for going back to it.
    struct Gallery {
        std::string path;
        bool unsaved = false;  // set here and not in the file yet
        uint32_t totalDiskSpaceMB = 0;
    };
    Gallery GetGallery() const EXCLUDES(mutex_);
    void RestoreGallery(const Gallery& gallery) EXCLUDES(mutex_);

    std::string GetTempFolder() const { return Get(&StoredSettings::tempFolder); }
    // False for a path that is not absolute or not a folder.
    bool SetTempFolder(const std::string& path) EXCLUDES(mutex_);

    TrackerUpdateState GetTrackerUpdateState() const { return Get(&StoredSettings::trackerUpdateState); }
    void SetTrackerUpdateState(TrackerUpdateState state) {
        Set(kTrackerUpdateState, &StoredSettings::trackerUpdateState, state);
    }
    // The same, and writes it, and nothing else that was set, before it returns.
    bool UpdateTrackerSettings(TrackerUpdateState state) EXCLUDES(fileMutex_);

    static std::string GetDefaultGalleryFolderPath();
    static std::vector<std::string> GetDefaultGalleryFolder();
    static std::string GetDefaultTempFolder();

  private:
    template <typename T>
    T Get(T StoredSettings::*value) const EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        return stored_.*value;
    }
    template <typename T>
    void Set(SettingsBit bit, T StoredSettings::*value, const T& now) EXCLUDES(mutex_) {
        KXP::MutexLock lock(mutex_);
        stored_.*value = now;
        unsaved_ |= bit;
    }

    // The uses of the file, in SettingsFile.cpp.
    bool LoadFile(StoredSettings& file, bool& oldLayout) EXCLUDES(fileMutex_);
    SettingsSet ReadNews(StoredSettings& file) EXCLUDES(fileMutex_);
    void Write(SettingsSet which) EXCLUDES(fileMutex_);
    enum class Written { Done, AskFirst };
    Written TryWrite(SettingsSet which, bool permitted) EXCLUDES(fileMutex_);
    bool IsAsLeft() const REQUIRES(fileMutex_);
    enum class FileRead { Done, Unusable, NotNow };
    std::optional<KXP::FileLock> LockFile(KXP::HeldLog& log) REQUIRES(fileMutex_);
    FileRead ReadFile(StoredSettings& stored, bool& oldLayout, KXP::HeldLog& log) REQUIRES(fileMutex_);
    bool MayWriteOver(const StoredSettings& mine, SettingsSet& which, StoredSettings& file, KXP::HeldLog& log)
        REQUIRES(fileMutex_);
    void NotePassing(int error, KXP::HeldLog& log) REQUIRES(fileMutex_);
    void NoteWritten(const StoredSettings& written, SettingsSet which) REQUIRES(fileMutex_);
    void RememberFile() REQUIRES(fileMutex_);
    SettingsSet NewsIn(const StoredSettings& file) const EXCLUDES(mutex_);

    static std::string LogText(const char* function, const StoredSettings& settings,
                               uint32_t totalDiskSpaceMB);
    static StoredSettings Defaults();
    void Store(const StoredSettings& stored, SettingsSet unsaved) EXCLUDES(mutex_);
    bool ChangeGallery(const std::string& path, bool unsaved) EXCLUDES(mutex_);
    std::string MakeGallery(const std::string& path) EXCLUDES(mutex_);
    void RememberDevice(const std::string& path) EXCLUDES(mutex_);

    std::atomic<uint32_t> totalDiskSpaceMB_{0};
    std::atomic<uint32_t> currentSizeMB_{0};
    std::atomic<bool> isRead_{false};
    std::atomic<bool> abandoned_{false};
    std::function<bool()> mayWrite_;

    // Held while the file is read or written.
    mutable KXP::OuterMutex fileMutex_ ACQUIRED_BEFORE(mutex_);
    // Of the last attempt to read the file, if it may pass; else 0.
    int passingError_ GUARDED_BY(fileMutex_) = 0;
    // The file as it was when this object knew all that was in it.
    std::optional<Stamp> known_ GUARDED_BY(fileMutex_);
    // The file as it was after this object read or wrote it last.
    std::optional<Stamp> left_ GUARDED_BY(fileMutex_);
    mutable KXP::Mutex mutex_;
    StoredSettings stored_ GUARDED_BY(mutex_);
    SettingsSet unsaved_ GUARDED_BY(mutex_) = 0;  // set here since the last write
    // Of each gallery that was in use: the device that its folder was on, by the folder's plain path.
    std::map<std::string, uint64_t> devices_ GUARDED_BY(mutex_);
};
