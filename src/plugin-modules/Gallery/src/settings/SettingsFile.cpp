// The uses of the settings file, which other processes use as well.
#include <cerrno>
#include <chrono>

#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"
#include "plugin-modules/Gallery/src/settings/Settings.h"

namespace {

using KXP::HeldLog;
using KXP::LogFailure;
using KXP::LogMilestone;
using KXP::MutexLock;

// Others hold the lock for one read and one write, unless they have been suspended.
constexpr std::chrono::seconds kLockLimit{1};

// A file that changed this lately may change again without showing it, because the times of files are coarse.
constexpr std::chrono::milliseconds kCoarseTime{100};

bool ChangedJustNow(const KXP::JSONFile::Stamp& stamp) {
    const std::chrono::nanoseconds changed =
        std::chrono::seconds(stamp.seconds) + std::chrono::nanoseconds(stamp.nanoseconds);
    const auto age = std::chrono::system_clock::now().time_since_epoch() - changed;
    return age < kCoarseTime && age > -kCoarseTime;
}

}  // namespace

bool Settings::LoadFile(StoredSettings& file, bool& oldLayout) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    const KXP::FileLock others = LockFile(log);
    return ReadFile(file, oldLayout, log);
}

SettingsSet Settings::ReadNews(StoredSettings& file) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    Stamp stamp;
    if (!ReadStamp(stamp) || known_ == stamp) return 0;
    const KXP::FileLock others = LockFile(log);
    {
        MutexLock valuesLock(mutex_);
        file = stored_;
    }
    bool oldLayout = false;
    const bool read = ReadFile(file, oldLayout, log);
    RememberFile();
    return read ? NewsIn(file) : 0;
}

// Which values of the file differ from those here and were not set here.
SettingsSet Settings::NewsIn(const StoredSettings& file) const {
    MutexLock lock(mutex_);
    return Differences(file, stored_) & ~unsaved_;
}

KXP::FileLock Settings::LockFile(HeldLog& log) const {
    KXP::FileLock others(directory() + "/" + kSettingsLockName, kLockLimit);
    const int error = errno;
    if (!others.IsHeld())
        log.Add(LogFailure, "Using the settings file without its lock, err:" + std::to_string(error));
    return others;
}

// Values that the file does not have stay as they are in `stored`.
bool Settings::ReadFile(StoredSettings& stored, bool& oldLayout, HeldLog& log) {
    KXP::Document document;
    const KXP::RetVal read = ReadAndParseJSON(document, log);
    if (read.Failed()) {
        log.Add(LogFailure, read.code == KXP::Code::kNotFound ? "Settings file not found"
                                                              : "Failure opening existing settings file");
        return false;
    }
    if (ReadStoredSettings(document, stored, oldLayout)) return true;
    log.Add(LogFailure, "Settings file invalid");
    return false;
}

// Writes those of the values that were set here since the last write, and the others as they are in the file.
void Settings::Write(SettingsSet which) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    const KXP::FileLock others = LockFile(log);
    StoredSettings mine;
    {
        MutexLock valuesLock(mutex_);
        mine = stored_;
        which &= unsaved_;
    }
    StoredSettings file = mine;
    bool oldLayout = false;
    Stamp stamp;
    if (ReadStamp(stamp) && ReadFile(file, oldLayout, log)) {
        CopySettings(mine, which, file);
    } else {
        file = mine;
        which = ~SettingsSet{0};
    }
    log.Add(LogMilestone, LogText("Settings::WriteSettings::", file, totalDiskSpaceMB_));
    KXP::Document document;
    WriteStoredSettings(file, document);
    // On failure, which is logged, the caller continues with the values in memory.
    if (!WriteJSON(document, log).Failed()) NoteWritten(file, which);
}

void Settings::NoteWritten(const StoredSettings& written, SettingsSet which) {
    {
        MutexLock lock(mutex_);
        // A value that was set again in the meantime waits for its own write.
        unsaved_ &= ~(which & ~Differences(written, stored_));
    }
    known_.reset();
    if (NewsIn(written) == 0) RememberFile();
}

// To be called while the lock is held and nothing in the file is unknown here.
void Settings::RememberFile() {
    known_.reset();
    Stamp stamp;
    if (ReadStamp(stamp) && !ChangedJustNow(stamp)) known_ = stamp;
}
