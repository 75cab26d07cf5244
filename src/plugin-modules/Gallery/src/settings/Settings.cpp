#include "plugin-modules/Gallery/src/settings/Settings.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/Path.h"
#include "common/drives/Drives.h"
#include "common/files/DirUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

using KXP::LogFailure;
using KXP::LogMilestone;
using KXP::MutexLock;

// Whether every function takes the path for the same place. Tests of a folder look for a relative path in the
// current folder while CreateDirectoryPath creates it under the root, and the system ends a path at a zero
// byte.
bool IsWholePath(const std::string& path) {
    return !path.empty() && path.front() == '/' && path.find('\0') == std::string::npos;
}

bool IsFolder(const std::string& path) {
    return IsWholePath(path) && KXP::DirectoryExists(path);
}

// Returns the gallery for a path of the old layout. The folder need not exist.
std::string GalleryOfOldLayout(const std::string& path) {
    const bool oldDefault = path == KXP::GetSpecialDirectory(KXP::SD_MOVIES);
    if (!oldDefault && IsWholePath(path)) return path;
    return KXP::CreateDirectoryPath(Settings::GetDefaultGalleryFolder());
}

// Falls back to the default gallery, for instance when the drive is unplugged.
std::string GalleryThatExists(const std::string& path) {
    if (IsFolder(path)) return path;
    if (path != Settings::GetDefaultGalleryFolderPath())
        KXP_LOG(LogFailure, "Gallery folder %s is missing, using the default folder", path.c_str());
    return KXP::CreateDirectoryPath(Settings::GetDefaultGalleryFolder());
}

// One text for all spellings of a path.
std::string PlainPath(const std::string& path) {
    return KXP::WithoutSlash(std::filesystem::path(path).lexically_normal().string());
}

// The text that CreateDirectoryPath would return.
std::string WithSingleSlashes(std::string path) {
    const auto areSlashes = [](char one, char next) { return one == '/' && next == '/'; };
    path.erase(std::unique(path.begin(), path.end(), areSlashes), path.end());
    if (!path.empty() && path.back() == '/') path.pop_back();
    return path;
}

std::optional<uint64_t> DeviceOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status.st_dev;
}

// The path, or the nearest folder above it that exists: the volume on which it would be created.
std::string NearestExisting(std::string path) {
    while (path.size() > 1 && !DeviceOf(path))
        path = KXP::ParentOf(KXP::WithoutSlash(path));
    return path;
}

uint32_t VolumeSizeMB(const std::string& path) {
    uint32_t freeMB = 0;
    uint32_t totalMB = 0;
    KXP::GetDriveSpace(NearestExisting(path), freeMB, totalMB);
    return totalMB;
}

}  // namespace

Settings::Settings() : JSONFile(GetShareFolderPath(), "", kSettingsFileName) {
    StopWritesOnce(abandoned_);
    if (!ReadAgain()) Store(Defaults(), 0);
}

bool Settings::ReadAgain() {
    if (isRead_) return true;
    if (!ReadSettings()) {
        if (ReadFailure().Failed()) return false;
        KXP_LOG(LogFailure, "Failed to read settings file, using defaults");
        SetDefaults();
    }
    isRead_ = true;
    // In every case, so that the file has the current layout after the first start.
    return WriteSettings();
}

bool Settings::ReadSettings() {
    StoredSettings file;
    file.userGalleryPath = GetDefaultGalleryFolderPath();
    bool oldLayout = false;
    if (!LoadFile(file, oldLayout)) return false;
    StoredSettings usable = file;
    usable.userGalleryPath =
        oldLayout ? GalleryOfOldLayout(file.userGalleryPath) : GalleryThatExists(file.userGalleryPath);
    if (!IsFolder(file.tempFolder)) usable.tempFolder = GetDefaultTempFolder();
    Store(usable, Differences(file, usable));
    KXP_LOG(LogMilestone, "%s", LogText("Settings::ReadSettings:: ", usable, totalDiskSpaceMB_).c_str());
    return true;
}

StoredSettings Settings::Defaults() {
    StoredSettings defaults;
    defaults.userGalleryPath = GetDefaultGalleryFolderPath();
    defaults.tempFolder = GetDefaultTempFolder();
    return defaults;
}

void Settings::SetDefaults() {
    const StoredSettings defaults = Defaults();
    if (!KXP::DirectoryExists(defaults.userGalleryPath)) KXP::CreateDirectoryPath(GetDefaultGalleryFolder());
    // Not as set here: another process may have written the file by now, and then its values count.
    Store(defaults, 0);
    currentSizeMB_ = 0;
}

void Settings::Store(const StoredSettings& stored, SettingsSet unsaved) {
    totalDiskSpaceMB_ = VolumeSizeMB(stored.userGalleryPath);
    RememberDevice(stored.userGalleryPath);
    MutexLock lock(mutex_);
    stored_ = stored;
    unsaved_ = unsaved;
}

bool Settings::WriteSettings() {
    Write(~SettingsSet{0});
    return true;
}

bool Settings::UpdateTrackerSettings(TrackerUpdateState state) {
    SetTrackerUpdateState(state);
    Write(kTrackerUpdateState);
    return true;
}

SettingsSet Settings::FollowFile(std::string& galleryPath) {
    StoredSettings file;
    SettingsSet news = ReadNews(file);
    if ((news & kTempFolder) != 0 && !IsFolder(file.tempFolder)) news &= ~SettingsSet{kTempFolder};
    galleryPath = file.userGalleryPath;
    MutexLock lock(mutex_);
    news &= ~unsaved_;  // without what another thread has set in the meantime
    CopySettings(file, news & ~SettingsSet{kUserGalleryPath}, stored_);
    return news;
}

std::string Settings::GetGalleryPath() {
    if (!isRead_) {
        const KXP::RetVal failure = ReadFailure();
        throw KXP::Exception(failure.code, failure.text.c_str(), failure.internal);
    }
    const std::string gallery = GetUserGalleryPath();
    if (IsWholePath(gallery) && DeviceOf(gallery)) return WithSingleSlashes(gallery);
    std::string path = MakeGallery(gallery);
    RememberDevice(gallery);
    return path;
}

std::optional<std::string> Settings::KnownGalleryPath() const {
    if (!isRead_) return std::nullopt;
    const std::string gallery = GetUserGalleryPath();
    if (!IsWholePath(gallery) || !KXP::Platform::IsKnownFolder(gallery)) return std::nullopt;
    return WithSingleSlashes(gallery);
}

// Throws when the folder is missing and the drive that it was on is gone.
std::string Settings::MakeGallery(const std::string& path) {
    if (const auto nearest = DeviceOf(NearestExisting(path)); nearest && !DeviceOf(path)) {
        MutexLock lock(mutex_);
        const auto known = devices_.find(PlainPath(path));
        if (known != devices_.end() && known->second != *nearest)
            throw KXP::Exception(KXP::Code::kFailure, "ERROR: Unable to create folder", ENODEV);
    }
    return KXP::CreateDirectoryPath({path});
}

void Settings::RememberDevice(const std::string& path) {
    const auto device = DeviceOf(path);
    MutexLock lock(mutex_);
    if (device) devices_[PlainPath(path)] = *device;
}

bool Settings::SetUserGalleryPath(const std::string& path) {
    return ChangeGallery(path, true);
}

bool Settings::AdoptUserGalleryPath(const std::string& path) {
    return ChangeGallery(path, false);
}

bool Settings::ChangeGallery(const std::string& path, bool unsaved) {
    if (!IsFolder(path)) {
        KXP_LOG(LogFailure, "Gallery directory does not exist, create one");
        try {
            if (IsWholePath(path)) MakeGallery(path);
        } catch (const KXP::Exception& error) {
            // The measurement below fails as well.
            KXP_LOG(LogFailure, "%s", error.what());
        }
    }
    Gallery gallery{path, unsaved, 0};
    uint32_t freeMB = 0;
    // A file also lies on a volume that can be measured, so the empty path stands for whatever is no folder.
    if (!KXP::GetDriveSpace(IsFolder(path) ? path : "", freeMB, gallery.totalDiskSpaceMB)) {
        totalDiskSpaceMB_ = gallery.totalDiskSpaceMB;
        KXP_LOG(LogFailure, "Failed to get drive space to adjust cap");
        return false;
    }
    RememberDevice(path);
    RestoreGallery(gallery);
    return true;
}

Settings::Gallery Settings::GetGallery() const {
    MutexLock lock(mutex_);
    return {stored_.userGalleryPath, (unsaved_ & kUserGalleryPath) != 0, totalDiskSpaceMB_};
}

void Settings::RestoreGallery(const Gallery& gallery) {
    totalDiskSpaceMB_ = gallery.totalDiskSpaceMB;
    MutexLock lock(mutex_);
    stored_.userGalleryPath = gallery.path;
    unsaved_ &= ~SettingsSet{kUserGalleryPath};
    if (gallery.unsaved) unsaved_ |= kUserGalleryPath;
}

bool Settings::SetTempFolder(const std::string& path) {
    if (!IsFolder(path)) {
        KXP_LOG(LogFailure, "Can not set temp directory to non-existant path");
        return false;
    }
    Set(kTempFolder, &StoredSettings::tempFolder, path);
    return true;
}

std::string Settings::GetDefaultGalleryFolderPath() {
    return KXP::FileJoin(GetDefaultGalleryFolder());
}

std::vector<std::string> Settings::GetDefaultGalleryFolder() {
    return {KXP::GetSpecialDirectory(KXP::SD_MOVIES), kVendorGalleryFolder, kDefaultGalleryFolder};
}

std::string Settings::GetDefaultTempFolder() {
    return KXP::GetSpecialDirectory(KXP::SD_TEMP);
}

std::string Settings::LogText(const char* function, const StoredSettings& settings,
                              uint32_t totalDiskSpaceMB) {
    char text[256];
    std::snprintf(
        text, sizeof text, "%senabled(%s), capacityPercent(%d), totalDiskSpaceMB(%d), trackerUpdateState(%s)",
        function, settings.capEnabled ? "true" : "false", static_cast<int>(settings.maxSizePercent),
        static_cast<int>(totalDiskSpaceMB), TrackerUpdateStateName(settings.trackerUpdateState).c_str());
    return text;
}
