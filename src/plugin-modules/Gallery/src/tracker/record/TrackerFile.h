// Reads and writes the content of the tracker's file, whose format docs/tracker-file.md describes. The
// functions keep no state and take no lock. The readers log, so hold no mutex that a log callback may need.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/json/JsonParse.h"
#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

constexpr int32_t kTrackerVersion = 6;

using TrackedUGCGames = std::map<std::string, TrackedUGCGame>;  // by the game's name

struct TrackerInfo {
    int32_t lastUGCIdUsed = 0;
    int32_t version = 0;
    uint32_t folderCRC = 0;
};

struct TrackerContent {
    std::vector<NewUGC> ugc;
    TrackedUGCGames games;
    TrackerInfo info;
};

// Reads the records of a file, none when it has no array of them, into `ugc`, which outlives the reader.
KXP::ElementReader ParseUGCFromJSON(std::vector<NewUGC>& ugc);

// Replaces `games`. A game without a name is left out with a log line. 0x8007000D when `root` is no object.
KXP::RetVal ParseUGCGamesFromJSON(const KXP::Value& root, TrackedUGCGames& games);

// A number that is missing or of another type leaves its member unchanged.
void ParseTrackerInfoFromJSON(const KXP::Value& root, TrackerInfo& info);

// Writes the whole file in valid UTF-8: other bytes of a record become U+FFFD.
void WriteTrackerJSON(const TrackerContent& content, KXP::PrettyJsonWriter& writer);
void WriteTrackerJSON(const std::vector<std::shared_ptr<const TrackedUGC>>& ugc, const TrackedUGCGames& games,
                      const TrackerInfo& info, KXP::PrettyJsonWriter& writer);

// The same text in parts, in this order and each in the form that it has there: from the start up to the end
// of the last record, the lines of a game without the comma before them, and from the end of the array of
// games to that of the file. The array of records ends and that of games begins between the first two.
void WriteRecords(const std::vector<std::shared_ptr<const TrackedUGC>>& ugc, KXP::PrettyJsonWriter& writer);
std::string GameText(const std::string& name, const TrackedUGCGame& game);
std::string InfoText(const TrackerInfo& info);
