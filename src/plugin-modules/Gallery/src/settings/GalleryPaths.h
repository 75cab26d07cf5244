// The names of the files and folders that this module keeps.
#pragma once

#include <string>

// In the share folder.
constexpr const char* kSettingsFileName = "GallerySettings.json";
// Empty; held by the process that uses the settings file.
constexpr const char* kSettingsLockName = "GallerySettings.lock";
constexpr const char* kTrackerFileName = "UGCTracker.json";
// The tracker file of a gallery that is still being scanned; it becomes kTrackerFileName when the scan is
// complete.
inline std::string UniqueTrackerFileName(int number) {
    return "UGCTracker_" + std::to_string(number) + ".json";
}

// Whether the module may keep a file of this name in the share folder.
inline bool IsShareFileName(const std::string& name) {
    return name == kSettingsFileName || name == kSettingsLockName || name.compare(0, 10, "UGCTracker") == 0;
}

// The default gallery: the second inside the first, in the user's videos folder.
constexpr const char* kVendorGalleryFolder = "ZORVEX";
constexpr const char* kDefaultGalleryFolder = "Ovirastream";
