// What the settings file holds, and its JSON; knows nothing of the file, of the disk and of locks.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/Json.h"

// How an update of the tracker stands. In the file InProgress is the mark of a rebuild that did not end.
enum TrackerUpdateState : int {
    TrackerUpdateNotActive = 0,
    TrackerUpdateInProgress = 1,
    TrackerUpdateComplete = 2,
    CancelUpdateComplete = 3,
    CancelUpdate = 4,
};

// The names that files and messages know the states by.
extern const std::map<std::string, TrackerUpdateState> kTrackerUpdateStateStrs;
// Empty for a value that is none of the enumeration.
std::string TrackerUpdateStateName(TrackerUpdateState state);

struct StoredSettings {
    bool capEnabled = false;
    uint32_t maxSizePercent = 100;
    std::string userGalleryPath;
    std::string tempFolder;
    TrackerUpdateState trackerUpdateState = TrackerUpdateNotActive;
};

// Leaves the members as they are that the file lacks or holds as another type; a state by an unknown name is
// TrackerUpdateNotActive. `oldLayout` tells that the path is that of files before "currentDirectoryV2", and
// then empty when it is no text. False when there are no settings in the file.
bool ReadStoredSettings(const KXP::Value& root, StoredSettings& settings, bool& oldLayout);

// Replaces what `document` holds, in the layout of today.
void WriteStoredSettings(const StoredSettings& settings, KXP::Document& document);
