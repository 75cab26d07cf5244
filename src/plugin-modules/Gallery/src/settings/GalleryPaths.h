// The files and folders that this module keeps under names of its own.
#pragma once

#include <string>

// In the share folder.
constexpr const char* kSettingsFileName = "GallerySettings.json";
constexpr const char* kTrackerFileName = "UGCTracker.json";
// The tracker of a gallery that is still being scanned: kept apart until the scan is complete.
inline std::string UniqueTrackerFileName(int number) {
    return "UGCTracker_" + std::to_string(number) + ".json";
}

// Whether a file of the share folder may have this name.
inline bool IsShareFileName(const std::string& name) {
    return name == kSettingsFileName || name.compare(0, 10, "UGCTracker") == 0;
}

// In the user's videos folder, one in the other: where captures go unless the user says otherwise.
constexpr const char* kVendorGalleryFolder = "ZORVEX";
constexpr const char* kDefaultGalleryFolder = "Ovirastream";
