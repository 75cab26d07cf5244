// What stands in the tracker's file: its reader and its writer, over data alone. docs/tracker-file.md tells
// the format. No function keeps state or takes a lock. The readers log, so no mutex may be held that a log
// line could come back to.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/Json.h"
#include "common/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

constexpr int32_t kTrackerVersion = 6;

using TrackedUGCGames = std::map<std::string, TrackedUGCGame>;  // by the name of the profile

struct TrackerInfo {
    int32_t lastUGCIdUsed = 0;
    int32_t version = 0;
    uint32_t folderCRC = 0;
};

struct TrackerContent {
    std::vector<TrackedUGC> ugc;
    TrackedUGCGames games;
    TrackerInfo info;
};

// The records of the file; none when there is no array of them.
std::vector<TrackedUGC> ParseUGCFromJSON(const KXP::Value& root);

// Replaces `games`. A game without a name is left out with a log line. 0x8007000D when `root` is no object.
KXP::RetVal ParseUGCGamesFromJSON(const KXP::Value& root, TrackedUGCGames& games);

// A number that is missing, or of another type, leaves its member as it was.
void ParseTrackerInfoFromJSON(const KXP::Value& root, TrackerInfo& info);

// Writes the whole file in valid UTF-8: bytes of a record that are none become U+FFFD.
void WriteTrackerJSON(const TrackerContent& content, KXP::PrettyJsonWriter& writer);
// `behindRecords` is called when the last record is written and the end of their array is not.
void WriteTrackerJSON(const std::vector<std::shared_ptr<const TrackedUGC>>& ugc, const TrackedUGCGames& games,
                      const TrackerInfo& info, KXP::PrettyJsonWriter& writer,
                      const std::function<void()>& behindRecords);
