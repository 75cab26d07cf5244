// The tracker's file, as a program beside the library reads it.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/json/JSONFile.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

struct TrackerRecords {
    std::map<std::string, int> ids;                           // by path
    std::map<std::string, std::string> captions;              // likewise
    std::map<std::string, std::map<std::string, int>> games;  // the same by profile name
    uint32_t folderCRC = 0;
    std::string wrong;  // what contradicts itself in the file; empty when nothing does
};

// False when there is no whole text in it, as while it is written.
inline bool ReadTracker(const std::string& path, TrackerRecords& out) {
    KXP::JSONFile file;
    file.Init(path);
    KXP::Document document;
    std::vector<NewUGC> records;
    const KXP::ElementReader elements = ParseUGCFromJSON(records);
    if (file.ReadAndParseJSON(document, &elements).Failed()) return false;
    TrackerInfo info;
    TrackedUGCGames games;
    ParseTrackerInfoFromJSON(document, info);
    if (ParseUGCGamesFromJSON(document, games).Failed()) return false;
    out = {};
    out.folderCRC = info.folderCRC;
    std::set<int> ids;
    // The ids of each game and of its groups, the game's own beneath "".
    std::map<std::pair<std::string, std::string>, std::multiset<int>> wanted, listed;
    for (const NewUGC& read : records) {
        const TrackedUGC& record = *read;
        if (!out.ids.emplace(record.path, record.id).second) out.wrong += "twice: " + record.path + "\n";
        out.captions[record.path] = record.topBarText;
        if (!ids.insert(record.id).second || record.id < 1 || record.id > info.lastUGCIdUsed)
            out.wrong += "id " + std::to_string(record.id) + " of " + record.path + "\n";
        if (record.profileName != std::filesystem::path(record.path).parent_path().filename().string())
            out.wrong += "game " + std::string(record.profileName) + " of " + record.path + "\n";
        out.games[record.profileName][record.path] = record.id;
        wanted[{record.profileName, ""}].insert(record.id);
        if (TrackedUGC::IsAHighlight(record) && !record.highlightGroupId.empty())
            wanted[{record.profileName, record.highlightGroupId}].insert(record.id);
    }
    for (const auto& [name, game] : games) {
        listed[{name, ""}].insert(game.recents.begin(), game.recents.end());
        for (const auto& [group, groupIds] : game.groups)
            listed[{name, group}].insert(groupIds.begin(), groupIds.end());
    }
    if (listed != wanted) out.wrong += "the games and groups are not those of the records\n";
    return true;
}
