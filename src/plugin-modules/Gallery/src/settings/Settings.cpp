#include "plugin-modules/Gallery/src/settings/Settings.h"

#include <cstdio>

#include "common/drives/Drives.h"
#include "common/files/DirUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "libraries/share-common/ShareFolder.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

using KXP::HeldLog;
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
    return IsFolder(path) ? path : KXP::CreateDirectoryPath(Settings::GetDefaultGalleryFolder());
}

uint32_t VolumeSizeMB(const std::string& path) {
    uint32_t freeMB = 0;
    uint32_t totalMB = 0;
    KXP::GetDriveSpace(path, freeMB, totalMB);
    return totalMB;
}

std::string LogText(const char* function, const StoredSettings& settings, uint32_t totalDiskSpaceMB) {
    char text[256];
    std::snprintf(
        text, sizeof text, "%senabled(%s), capacityPercent(%d), totalDiskSpaceMB(%d), trackerUpdateState(%s)",
        function, settings.capEnabled ? "true" : "false", static_cast<int>(settings.maxSizePercent),
        static_cast<int>(totalDiskSpaceMB), TrackerUpdateStateName(settings.trackerUpdateState).c_str());
    return text;
}

}  // namespace

Settings::Settings() : JSONFile(GetShareFolderPath(), "", kSettingsFileName) {
    if (!ReadSettings()) {
        KXP_LOG(LogFailure, "Failed to read settings file, using defaults");
        SetDefaults();
    }
    // In every case, so that the file has the current layout after the first start.
    WriteSettings();
}

bool Settings::ReadSettings() {
    KXP::Document document;
    if (!ReadFile(document)) return false;
    StoredSettings stored;
    stored.userGalleryPath = GetDefaultGalleryFolderPath();
    bool oldLayout = false;
    if (!ReadStoredSettings(document, stored, oldLayout)) {
        KXP_LOG(LogFailure, "Settings file invalid");
        return false;
    }
    stored.userGalleryPath =
        oldLayout ? GalleryOfOldLayout(stored.userGalleryPath) : GalleryThatExists(stored.userGalleryPath);
    if (!IsFolder(stored.tempFolder)) stored.tempFolder = GetDefaultTempFolder();
    const uint32_t totalDiskSpaceMB = VolumeSizeMB(stored.userGalleryPath);
    Store(stored, totalDiskSpaceMB);
    KXP_LOG(LogMilestone, "%s", LogText("Settings::ReadSettings:: ", stored, totalDiskSpaceMB).c_str());
    return true;
}

bool Settings::ReadFile(KXP::Document& document) {
    HeldLog log;
    MutexLock lock(fileMutex_);
    const KXP::RetVal read = ReadAndParseJSON(document, log);
    if (!read.Failed()) return true;
    log.Add(LogFailure, read.code == KXP::Code::kNotFound ? "Settings file not found"
                                                          : "Failure opening existing settings file");
    return false;
}

void Settings::SetDefaults() {
    StoredSettings defaults;
    defaults.userGalleryPath = GetDefaultGalleryFolderPath();
    if (!KXP::DirectoryExists(defaults.userGalleryPath)) KXP::CreateDirectoryPath(GetDefaultGalleryFolder());
    defaults.tempFolder = GetDefaultTempFolder();
    Store(defaults, VolumeSizeMB(defaults.userGalleryPath));
    currentSizeMB_ = 0;
}

bool Settings::WriteSettings() {
    HeldLog log;
    MutexLock lock(fileMutex_);
    const StoredSettings stored = Stored();
    log.Add(LogMilestone, LogText("Settings::WriteSettings::", stored, totalDiskSpaceMB_));
    KXP::Document document;
    WriteStoredSettings(stored, document);
    // On failure, which is logged, the caller continues with the values in memory.
    (void)WriteJSON(document, log);
    return true;
}

void Settings::Store(const StoredSettings& stored, uint32_t totalDiskSpaceMB) {
    MutexLock fileLock(fileMutex_);  // so that no write sees half of the values
    capEnabled_ = stored.capEnabled;
    maxSizePercent_ = stored.maxSizePercent;
    trackerUpdateState_ = stored.trackerUpdateState;
    totalDiskSpaceMB_ = totalDiskSpaceMB;
    MutexLock pathLock(pathMutex_);
    userGalleryPath_ = stored.userGalleryPath;
    tempFolder_ = stored.tempFolder;
}

StoredSettings Settings::Stored() const {
    MutexLock lock(pathMutex_);
    return {capEnabled_, maxSizePercent_, userGalleryPath_, tempFolder_, trackerUpdateState_};
}

std::string Settings::GetUserGalleryPath() const {
    MutexLock lock(pathMutex_);
    return userGalleryPath_;
}

std::string Settings::GetGalleryPath() const {
    return KXP::CreateDirectoryPath({GetUserGalleryPath()});
}

bool Settings::SetUserGalleryPath(const std::string& path) {
    if (!IsFolder(path)) {
        KXP_LOG(LogFailure, "Gallery directory does not exist, create one");
        try {
            if (IsWholePath(path)) KXP::CreateDirectoryPath({path});
        } catch (const KXP::Exception& error) {
            // The measurement below fails as well.
            KXP_LOG(LogFailure, "%s", error.what());
        }
    }
    uint32_t freeMB = 0;
    uint32_t totalMB = 0;
    // A file also lies on a volume that can be measured, so the empty path stands for whatever is no folder.
    const bool measured = KXP::GetDriveSpace(IsFolder(path) ? path : "", freeMB, totalMB);
    totalDiskSpaceMB_ = totalMB;
    if (!measured) {
        KXP_LOG(LogFailure, "Failed to get drive space to adjust cap");
        return false;
    }
    MutexLock lock(pathMutex_);
    userGalleryPath_ = path;
    return true;
}

std::string Settings::GetTempFolder() const {
    MutexLock lock(pathMutex_);
    return tempFolder_;
}

bool Settings::SetTempFolder(const std::string& path) {
    if (!IsFolder(path)) {
        KXP_LOG(LogFailure, "Can not set temp directory to non-existant path");
        return false;
    }
    MutexLock lock(pathMutex_);
    tempFolder_ = path;
    return true;
}

bool Settings::UpdateTrackerSettings(TrackerUpdateState state) {
    SetTrackerUpdateState(state);
    return WriteSettings();
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
