// The names of the files and folders that this module keeps.
#pragma once

#include <string>
#include <string_view>

#include "base/PartFiles.h"

// In the share folder.
constexpr const char* kSettingsFileName = "GallerySettings.json";
// Empty; held by the process that uses the settings file.
constexpr const char* kSettingsLockName = "GallerySettings.lock";
constexpr const char* kTrackerFileName = "UGCTracker.json";
// Empty; held by the process that writes the tracker file.
constexpr const char* kTrackerLockName = "UGCRecord.lock";
// What people gave captures, for the day on which the tracker file is rebuilt.
constexpr const char* kKeptFileName = "UGCKept.jsonl";
// The tracker file of a gallery that is still being scanned; it becomes kTrackerFileName when the scan is
// complete.
inline std::string UniqueTrackerFileName(int number) {
    return "UGCTracker_" + std::to_string(number) + ".json";
}

// The start of the names of notes on edits under way.
constexpr const char* kEditNotes = "UGCEdit_";

// Whether the module may keep a file of this name in the share folder.
inline bool IsShareFileName(const std::string& name) {
    const auto begins = [&](std::string_view start) { return name.compare(0, start.size(), start) == 0; };
    return name == kSettingsFileName || name == kSettingsLockName || name == kTrackerLockName ||
           name == kKeptFileName || begins("UGCTracker") || begins(kEditNotes) || begins(KXP::kPartNotes);
}

// The default gallery: the second inside the first, in the user's videos folder.
constexpr const char* kVendorGalleryFolder = "ZORVEX";
constexpr const char* kDefaultGalleryFolder = "Ovirastream";
