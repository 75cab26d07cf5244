// The values in the settings file and their JSON. No file, no disk, no locks.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/json/Json.h"

// The state of a tracker update. TrackerUpdateInProgress in the file marks a rebuild that was not completed.
enum TrackerUpdateState : int {
    TrackerUpdateNotActive = 0,
    TrackerUpdateInProgress = 1,
    TrackerUpdateComplete = 2,
    CancelUpdateComplete = 3,
    CancelUpdate = 4,
};

// Their names in files and messages.
extern const std::map<std::string, TrackerUpdateState> kTrackerUpdateStateStrs;
// Empty for a value outside the enumeration.
std::string TrackerUpdateStateName(TrackerUpdateState state);

struct StoredSettings {
    bool capEnabled = false;
    uint32_t maxSizePercent = 100;
    std::string userGalleryPath;
    std::string tempFolder;
    TrackerUpdateState trackerUpdateState = TrackerUpdateNotActive;
};

// The values, as bits of a set.
enum SettingsBit : unsigned {
    kCapEnabled = 1,
    kMaxSizePercent = 2,
    kUserGalleryPath = 4,
    kTempFolder = 8,
    kTrackerUpdateState = 16,
};
using SettingsSet = unsigned;

SettingsSet Differences(const StoredSettings& a, const StoredSettings& b);
void CopySettings(const StoredSettings& from, SettingsSet which, StoredSettings& to);

// Leaves members unchanged that are missing or have another type; an unknown state becomes
// TrackerUpdateNotActive. Sets `oldLayout` when the path is under the key that "currentDirectoryV2" replaced;
// it is then empty if it is not a string. False when the file contains no settings. Logs nothing.
bool ReadStoredSettings(const KXP::Value& root, StoredSettings& settings, bool& oldLayout);

// Replaces the content of `document`, in the current layout.
void WriteStoredSettings(const StoredSettings& settings, KXP::Document& document);
