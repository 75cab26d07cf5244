// One capture on record, and its two JSON forms: that of the tracker's file and that of the requests.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/Json.h"
#include "libraries/share-common/Highlight.h"

struct TrackedUGC {
    TrackedUGC() = default;
    // A highlight that is still in flight: a record without size, date and length.
    explicit TrackedUGC(const Highlight& highlight);

    bool MediaFileExists() const;
    static bool IsAHighlight(const TrackedUGC& ugc);
    // The form of the requests: every member, but for the subtype of a screenshot, in words that the pages
    // know. Bytes that are not UTF-8 become U+FFFD.
    static void CreateUGCJSONValue(const TrackedUGC& ugc, KXP::Value& out, KXP::Allocator& allocator);

    int32_t id = 0;
    std::string path;  // absolute
    std::string fileType;
    std::string fileSubType;
    std::string fileSource;
    uint32_t sizeKB = 0;      // units of 1000 bytes
    std::string date;         // as KXP::FileDate gives it
    std::string profileName;  // the name of the file's folder, which stands for the game
    std::string drsName;
    std::string shortName;
    uint64_t cmsId = 0;
    std::string duration;  // "HH:MM:SS"
    std::string audioType;
    std::string highlightDefinitionId;
    std::string highlightGroupId;
    int32_t highlightTags = 0;          // bits
    int32_t highlightSignificance = 0;  // bits
    std::string highlightName;
    std::string eventTimeStamp;
    std::string topBarText;
    std::string bottomBarText;
    uint32_t msDuration = 0;
};

// What belongs to one game, which its key in a map of games names.
struct TrackedUGCGame {
    std::string appName;
    std::vector<int> recents;                        // ids, oldest first
    std::map<std::string, std::vector<int>> groups;  // ids by highlight group
};
