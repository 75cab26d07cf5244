// The uses of the settings file, which other processes use as well.
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "base/FileDescriptor.h"
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

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

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
    const std::optional<KXP::FileLock> others = LockFile(log);
    const FileRead read = others ? ReadFile(file, oldLayout, log) : FileRead::NotNow;
    Stamp stamp;
    if (read != FileRead::NotNow && ReadStamp(stamp)) left_ = stamp;
    return read == FileRead::Done;
}

KXP::RetVal Settings::ReadFailure() const {
    MutexLock lock(fileMutex_);
    if (passingError_ == 0) return {};
    return {KXP::Code::kFailure, "The settings cannot be read now: " + ErrorText(passingError_),
            passingError_};
}

SettingsSet Settings::ReadNews(StoredSettings& file) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    Stamp stamp;
    if (!ReadStamp(stamp) || known_ == stamp) return 0;
    const std::optional<KXP::FileLock> others = LockFile(log);
    if (!others) return 0;
    {
        MutexLock valuesLock(mutex_);
        file = stored_;
    }
    bool oldLayout = false;
    const FileRead read = ReadFile(file, oldLayout, log);
    if (read != FileRead::NotNow) RememberFile();
    return read == FileRead::Done ? NewsIn(file) : 0;
}

// Which values of the file differ from those here and were not set here.
SettingsSet Settings::NewsIn(const StoredSettings& file) const {
    MutexLock lock(mutex_);
    return Differences(file, stored_) & ~unsaved_;
}

// None when the file cannot be used now.
std::optional<KXP::FileLock> Settings::LockFile(HeldLog& log) {
    KXP::FileLock others(directory() + "/" + kSettingsLockName, kLockLimit);
    const int error = errno;
    if (others.IsHeld()) return others;
    if (KXP::IsPassingError(error)) {
        NotePassing(error, log);
        return std::nullopt;
    }
    log.Add(LogFailure, "Using the settings file without its lock, err:" + std::to_string(error));
    return others;
}

void Settings::NotePassing(int error, HeldLog& log) {
    if (std::exchange(passingError_, error) == 0)
        log.Add(LogFailure, "The settings cannot be read now: " + ErrorText(error) +
                                "; nothing is written, and they are read again later");
}

// Values that the file does not have stay as they are in `stored`.
Settings::FileRead Settings::ReadFile(StoredSettings& stored, bool& oldLayout, HeldLog& log) {
    KXP::Document document;
    const KXP::RetVal read = ReadUnlessPassing(document, log);
    if (read.Failed() && read.internal != 0) {
        NotePassing(read.internal, log);
        return FileRead::NotNow;
    }
    passingError_ = 0;
    if (read.Failed()) {
        log.Add(LogFailure, read.code == KXP::Code::kNotFound ? "Settings file not found"
                                                              : "Failure opening existing settings file");
        return FileRead::Unusable;
    }
    if (ReadStoredSettings(document, stored, oldLayout)) return FileRead::Done;
    log.Add(LogFailure, "Settings file invalid");
    return FileRead::Unusable;
}

// Writes those of the values that were set here since the last write, and the others as they are in the file.
void Settings::Write(SettingsSet which) {
    if (!isRead_) return;
    bool permitted = false;
    while (TryWrite(which, permitted) == Written::AskFirst) {
        permitted = mayWrite_ && mayWrite_();
        if (permitted) continue;
        KXP_LOG(LogFailure, "The settings have another owner by now, and what was not written is dropped");
        return;
    }
}

// Whether nobody has written the file since this object used it last.
bool Settings::IsAsLeft() const {
    Stamp now;
    return ReadStamp(now) ? left_ == now : !left_;
}

Settings::Written Settings::TryWrite(SettingsSet which, bool permitted) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    const std::optional<KXP::FileLock> others = LockFile(log);
    if (!others) return Written::Done;
    const bool isAsLeft = IsAsLeft();
    StoredSettings mine;
    {
        MutexLock valuesLock(mutex_);
        mine = stored_;
        which &= unsaved_;
    }
    StoredSettings file = mine;
    if (!MayWriteOver(mine, which, file, log)) return Written::Done;
    // Now, because this thread may have waited for the disk until here.
    if (abandoned_ && !(permitted && isAsLeft)) {
        if (!permitted) return Written::AskFirst;
        log.Add(LogFailure, "The settings have changed, and what was not written is dropped");
        return Written::Done;
    }
    log.Add(LogMilestone, LogText("Settings::WriteSettings::", file, totalDiskSpaceMB_));
    KXP::Document document;
    WriteStoredSettings(file, document);
    // On failure, which is logged, the caller continues with the values in memory.
    if (!WriteJSON(document, log).Failed()) NoteWritten(file, which);
    return Written::Done;
}

// Sets `file` to what the file is to hold, and extends `which` to all values if the file cannot be used.
// False when it cannot be read now: the values of others would be lost.
bool Settings::MayWriteOver(const StoredSettings& mine, SettingsSet& which, StoredSettings& file,
                            HeldLog& log) {
    Stamp stamp;
    const bool exists = ReadStamp(stamp);
    if (!exists && KXP::IsPassingError(errno)) {
        NotePassing(errno, log);
        return false;
    }
    bool oldLayout = false;
    const FileRead read = exists ? ReadFile(file, oldLayout, log) : FileRead::Unusable;
    if (read == FileRead::NotNow) return false;
    if (read == FileRead::Done) {
        CopySettings(mine, which, file);
    } else {
        file = mine;
        which = ~SettingsSet{0};
    }
    return true;
}

void Settings::NoteWritten(const StoredSettings& written, SettingsSet which) {
    {
        MutexLock lock(mutex_);
        // A value that was set again in the meantime waits for its own write.
        unsaved_ &= ~(which & ~Differences(written, stored_));
    }
    const bool knowsAll = NewsIn(written) == 0;
    RememberFile();
    if (!knowsAll) known_.reset();
}

// To be called while the lock is held and nothing in the file is unknown here.
void Settings::RememberFile() {
    known_.reset();
    left_.reset();
    Stamp stamp;
    if (!ReadStamp(stamp)) return;
    left_ = stamp;
    if (!ChangedJustNow(stamp)) known_ = stamp;
}
