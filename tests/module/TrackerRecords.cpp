#include "tests/module/TrackerRecords.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "common/JSONFile.h"
#include "plugin-modules/Gallery/src/tracker/TrackerFile.h"

namespace {

using GroupIds = std::map<std::string, std::vector<int>>;

struct Game {
    std::vector<int> recents;
    GroupIds groups;
};

std::vector<int> Sorted(std::vector<int> ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::map<std::string, Game> GamesOf(const std::vector<TrackedUGC>& records) {
    std::map<std::string, Game> games;
    for (const TrackedUGC& record : records) {
        Game& game = games[record.profileName];
        game.recents.push_back(record.id);
        if (TrackedUGC::IsAHighlight(record) && !record.highlightGroupId.empty())
            game.groups[record.highlightGroupId].push_back(record.id);
    }
    return games;
}

std::string CompareGames(std::map<std::string, Game> expected, const TrackedUGCGames& games) {
    std::string wrong;
    for (const auto& [name, game] : games) {
        Game& wanted = expected[name];
        if (Sorted(game.recents) != Sorted(wanted.recents)) wrong += "recents of the game " + name + "\n";
        GroupIds groups;
        for (const auto& [group, ids] : game.groups)
            groups[group] = Sorted(ids);
        for (auto& [group, ids] : wanted.groups)
            ids = Sorted(ids);
        if (groups != wanted.groups) wrong += "groups of the game " + name + "\n";
        expected.erase(name);
    }
    for (const auto& [name, game] : expected)
        wrong += "no game " + name + "\n";
    return wrong;
}

}  // namespace

bool ReadTracker(const std::string& path, TrackerRecords& out) {
    KXP::JSONFile file;
    file.Init(path);
    KXP::Document document;
    if (file.ReadAndParseJSON(document).Failed()) return false;
    TrackerInfo info;
    std::vector<TrackedUGC> records;
    TrackedUGCGames games;
    uint32_t usageKB = 0;
    ParseTrackerInfoFromJSON(document, info);
    if (ParseUGCFromJSON(document, records, usageKB).Failed() ||
        ParseUGCGamesFromJSON(document, games).Failed())
        return false;
    out = {};
    out.folderCRC = info.folderCRC;
    std::set<int> ids;
    for (const TrackedUGC& record : records) {
        if (!out.ids.emplace(record.path, record.id).second) out.wrong += "twice: " + record.path + "\n";
        if (!ids.insert(record.id).second || record.id < 1 || record.id > info.lastUGCIdUsed)
            out.wrong += "id " + std::to_string(record.id) + " of " + record.path + "\n";
        if (record.profileName != std::filesystem::path(record.path).parent_path().filename())
            out.wrong += "game " + record.profileName + " of " + record.path + "\n";
        out.games[record.profileName][record.path] = record.id;
    }
    out.wrong += CompareGames(GamesOf(records), games);
    return true;
}
