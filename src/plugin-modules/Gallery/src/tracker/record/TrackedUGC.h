// One capture on record, and its form in responses; TrackerFile.h has that of the tracker's file.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/json/Json.h"
#include "libraries/share-common/Highlight.h"
#include "plugin-modules/Gallery/src/tracker/record/FileStamp.h"
#include "plugin-modules/Gallery/src/tracker/record/SharedText.h"

struct TrackedUGC {
    TrackedUGC() = default;
    // The record of a highlight in flight: without size, date and duration.
    explicit TrackedUGC(const Highlight& highlight);

    bool MediaFileExists() const;
    static bool IsAHighlight(const TrackedUGC& ugc);
    // The form in responses: all members but the subtype of a screenshot, in words that pages know. Bytes
    // that are not UTF-8 become U+FFFD.
    static void CreateUGCJSONValue(const TrackedUGC& ugc, KXP::Value& out, KXP::Allocator& allocator);

    // Shares the texts that other records have, too.
    void ShareTexts(TextPool& pool);

    int32_t id = 0;
    std::string path;  // absolute
    SharedText fileType;
    SharedText fileSubType;
    SharedText fileSource;
    uint32_t sizeKB = 0;     // units of 1000 bytes
    SharedText date;         // from KXP::FileDate
    SharedText profileName;  // the name of the file's folder, which names the game
    SharedText drsName;
    SharedText shortName;
    uint64_t cmsId = 0;
    SharedText duration;  // "HH:MM:SS"
    SharedText audioType;
    SharedText highlightDefinitionId;
    SharedText highlightGroupId;
    int32_t highlightTags = 0;          // bits
    int32_t highlightSignificance = 0;  // bits
    SharedText highlightName;
    SharedText eventTimeStamp;
    SharedText topBarText;
    SharedText bottomBarText;
    uint32_t msDuration = 0;
    FileStamp stamp;  // of the file when it was inspected; in neither JSON form
};

// A record while it is made; once entered, it never changes.
using NewUGC = std::shared_ptr<TrackedUGC>;

// The captures of one game. The game's name is its key in a map of games.
struct TrackedUGCGame {
    std::string appName;
    std::vector<int> recents;                        // ids, oldest first
    std::map<std::string, std::vector<int>> groups;  // ids by highlight group
    uint64_t version = 0;                            // another one after each change
};
