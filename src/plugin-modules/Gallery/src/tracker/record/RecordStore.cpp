#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"

#include <algorithm>

namespace {

// In one pass, however many ids there are.
void Erase(std::vector<int>& from, const std::set<int>& ids) {
    from.erase(std::remove_if(from.begin(), from.end(), [&](int id) { return ids.count(id) > 0; }),
               from.end());
}

void EraseFromGroup(TrackedUGCGame& game, const std::string& group, const std::set<int>& ids) {
    const auto found = game.groups.find(group);
    if (found == game.groups.end()) return;
    Erase(found->second, ids);
    if (found->second.empty()) game.groups.erase(found);
}

// The group that lists the record; empty for none.
std::string GroupOf(const TrackedUGC& record) {
    return TrackedUGC::IsAHighlight(record) ? record.highlightGroupId : "";
}

}  // namespace

void RecordStore::Clear() {
    ++generation_;
    byPath_.clear();
    byId_.clear();
    records_.clear();
    games_.clear();
    lastId_ = 0;
    usageKB_ = 0;
}

int32_t RecordStore::NextId() {
    return lastId_ < INT32_MAX ? ++lastId_ : 0;
}

void RecordStore::Load(std::vector<TrackedUGC> records, Games games, int32_t lastId) {
    Clear();
    lastId_ = lastId;
    for (TrackedUGC& record : records)
        Append(std::move(record));
    games_ = std::move(games);
    if (!byId_.empty()) lastId_ = std::max(lastId_, byId_.rbegin()->first);
    lastId_ = std::max(lastId_, 0);
    if (!HasUniqueIds()) RepairIds();
}

void RecordStore::Load(std::vector<TrackedUGC> records, int32_t lastId) {
    Load(std::move(records), {}, lastId);
    games_.clear();
    for (const auto& [place, record] : records_)
        ListInGame(*record);
}

// A record without a path is of no capture, and goes with the next list.
bool RecordStore::HasUniqueIds() const {
    const auto isSame = [](const IdKey& a, const IdKey& b) { return a.first == b.first; };
    if (byId_.empty()) return true;
    // Of the file that the product wrote this is enough, and no record is looked up.
    if (byId_.begin()->first > 0 && std::adjacent_find(byId_.begin(), byId_.end(), isSame) == byId_.end())
        return true;
    int32_t before = 0;
    for (const auto& [id, place] : byId_) {
        if (records_.find(place)->second->path.empty()) continue;
        if (id <= before) return false;
        before = id;
    }
    return true;
}

void RecordStore::RepairIds() {
    games_.clear();
    std::set<int32_t> taken;
    for (auto entry = records_.cbegin(); entry != records_.cend(); ++entry) {
        TrackedUGC record = *entry->second;
        if (record.path.empty()) continue;
        if (record.id <= 0 || !taken.insert(record.id).second) {
            record.id = NextId();
            for (int32_t id = 1; record.id == 0; ++id)
                if (IsFreeId(id)) record.id = id;
            taken.insert(record.id);
            Exchange(entry, record);
        }
        ListInGame(record);
    }
}

void RecordStore::ListInGame(const TrackedUGC& record) {
    TrackedUGCGame& game = games_[record.profileName];
    game.appName = record.profileName;
    game.recents.push_back(record.id);
    if (const std::string group = GroupOf(record); !group.empty()) game.groups[group].push_back(record.id);
}

RecordStore::RecordPtr RecordStore::Track(TrackedUGC record) {
    RecordPtr entered = Append(std::move(record));
    lastId_ = std::max(lastId_, entered->id);
    ListInGame(*entered);
    return entered;
}

RecordStore::RecordPtr RecordStore::Append(TrackedUGC&& record) {
    const uint64_t place = nextPlace_++;
    RecordPtr entered = std::make_shared<const TrackedUGC>(std::move(record));
    records_.emplace_hint(records_.end(), place, entered);
    AddUsage(entered->sizeKB);
    Index(place, *entered);
    return entered;
}

void RecordStore::AddUsage(uint32_t sizeKB) {
    usageKB_ += std::min(sizeKB, UINT32_MAX - usageKB_);
}

void RecordStore::Index(uint64_t place, const TrackedUGC& record) {
    byPath_.emplace(record.path, place);
    byId_.emplace_hint(byId_.end(), record.id, place);  // most are the newest
}

void RecordStore::Unindex(uint64_t place, const TrackedUGC& record) {
    const auto [first, end] = byPath_.equal_range(record.path);
    byPath_.erase(std::find_if(first, end, [&](const auto& entry) { return entry.second == place; }));
    byId_.erase({record.id, place});
}

RecordStore::Removed RecordStore::Remove(const std::vector<std::string>& paths, uint64_t before) {
    std::set<uint64_t> places;
    // Each path once: if a file had the same path in all records, the time would be quadratic.
    for (const std::string_view path : std::set<std::string_view>(paths.begin(), paths.end())) {
        const auto [first, end] = byPath_.equal_range(path);
        for (auto entry = first; entry != end; ++entry)
            if (entry->second < before) places.insert(entry->second);
    }
    Removed removed;
    for (const uint64_t place : places) {
        removed.records.push_back(Detach(records_.find(place)));
        usageKB_ -= std::min(usageKB_, removed.records.back()->sizeKB);
    }
    removed.withoutGame = RemoveFromGames(removed.records);
    return removed;
}

RecordStore::RecordPtr RecordStore::Detach(Records::iterator record) {
    ++generation_;
    RecordPtr detached = record->second;
    Unindex(record->first, *detached);
    records_.erase(record);
    return detached;
}

RecordStore::RecordPtr RecordStore::Take(int32_t id, const std::string& game, const std::string& group) {
    for (auto entry = byId_.lower_bound({id, 0}); entry != byId_.end() && entry->first == id; ++entry) {
        const auto record = records_.find(entry->second);
        if (record->second->profileName == game && record->second->highlightGroupId == group)
            return Detach(record);
    }
    return nullptr;
}

int RecordStore::RemoveFromGames(const std::vector<RecordPtr>& records) {
    int withoutGame = 0;
    std::map<std::string_view, std::set<int>> byGame;
    std::map<std::pair<std::string_view, std::string>, std::set<int>> byGroup;
    for (const RecordPtr& record : records) {
        if (games_.count(record->profileName) == 0) {
            ++withoutGame;
            continue;
        }
        byGame[record->profileName].insert(record->id);
        if (TrackedUGC::IsAHighlight(*record))
            byGroup[{record->profileName, record->highlightGroupId}].insert(record->id);
    }
    for (const auto& [key, ids] : byGroup)
        EraseFromGroup(games_[std::string(key.first)], key.second, ids);
    for (const auto& [name, ids] : byGame) {
        const auto game = games_.find(std::string(name));
        Erase(game->second.recents, ids);
        if (game->second.recents.empty() && game->second.groups.empty()) games_.erase(game);
    }
    return withoutGame;
}

RecordStore::RecordPtr RecordStore::Replace(TrackedUGC record) {
    const auto found = FirstOfPath(record.path);
    if (found == records_.end()) return nullptr;
    const RecordPtr old = found->second;
    RecordPtr entered = Exchange(found, std::move(record));
    lastId_ = std::max(lastId_, entered->id);
    TrackedUGCGame& game = games_[old->profileName];
    game.appName = old->profileName;
    std::replace(game.recents.begin(), game.recents.end(), old->id, entered->id);
    std::vector<int>& group = game.groups[entered->highlightGroupId];
    std::replace(group.begin(), group.end(), old->id, entered->id);
    return entered;
}

RecordStore::RecordPtr RecordStore::Change(TrackedUGC record) {
    const auto found = FirstOfPath(record.path);
    return found == records_.end() ? nullptr : Exchange(found, std::move(record));
}

RecordStore::RecordPtr RecordStore::Renew(TrackedUGC record) {
    const auto found = FirstOfPath(record.path);
    if (found == records_.end()) return nullptr;
    const RecordPtr old = found->second;
    record.id = old->id;
    RecordPtr entered = Exchange(found, std::move(record));
    usageKB_ -= std::min(usageKB_, old->sizeKB);
    AddUsage(entered->sizeKB);
    const std::string group = GroupOf(*entered);
    if (group != GroupOf(*old)) {
        TrackedUGCGame& game = games_[entered->profileName];
        EraseFromGroup(game, GroupOf(*old), {old->id});
        if (!group.empty()) game.groups[group].push_back(entered->id);
    }
    return entered;
}

RecordStore::RecordPtr RecordStore::Exchange(Records::const_iterator place, TrackedUGC record) {
    ++generation_;
    const uint64_t number = place->first;
    Unindex(number, *place->second);
    RecordPtr entered = std::make_shared<const TrackedUGC>(std::move(record));
    records_[number] = entered;
    Index(number, *entered);
    return entered;
}

RecordStore::Records::const_iterator RecordStore::FirstOfPath(const std::string& path) const {
    const auto [first, end] = byPath_.equal_range(path);
    const auto earliest =
        std::min_element(first, end, [](const auto& a, const auto& b) { return a.second < b.second; });
    return earliest == end ? records_.end() : records_.find(earliest->second);
}

RecordStore::RecordPtr RecordStore::FindByPath(const std::string& path) const {
    const auto found = FirstOfPath(path);
    return found == records_.end() ? nullptr : found->second;
}

RecordStore::RecordPtr RecordStore::FindById(int32_t id) const {
    const auto found = byId_.lower_bound({id, 0});
    if (found == byId_.end() || found->first != id) return nullptr;
    return records_.find(found->second)->second;
}

std::vector<RecordStore::RecordPtr> RecordStore::Under(const std::string& prefix) const {
    std::vector<uint64_t> places;
    for (auto entry = byPath_.lower_bound(prefix);
         entry != byPath_.end() && entry->first.substr(0, prefix.size()) == prefix; ++entry)
        places.push_back(entry->second);
    std::sort(places.begin(), places.end());
    std::vector<RecordPtr> found;
    found.reserve(places.size());
    for (const uint64_t place : places)
        found.push_back(records_.find(place)->second);
    return found;
}

std::vector<RecordStore::RecordPtr> RecordStore::Collect(const std::vector<int>& ids) const {
    std::vector<RecordPtr> found;
    for (const int id : ids)
        if (RecordPtr record = FindById(id)) found.push_back(std::move(record));
    return found;
}

std::vector<RecordStore::RecordPtr> RecordStore::OfGame(const std::string& game) const {
    const auto found = games_.find(game);
    return found == games_.end() ? std::vector<RecordPtr>{} : Collect(found->second.recents);
}

std::vector<RecordStore::RecordPtr> RecordStore::OfGroup(const std::string& game,
                                                         const std::string& group) const {
    const auto found = games_.find(game);
    if (found == games_.end()) return {};
    const auto ids = found->second.groups.find(group);
    if (ids == found->second.groups.end()) return {};
    std::vector<RecordPtr> records = Collect(ids->second);
    records.erase(std::remove_if(records.begin(), records.end(),
                                 [](const RecordPtr& record) { return !TrackedUGC::IsAHighlight(*record); }),
                  records.end());
    return records;
}

std::vector<RecordStore::RecordPtr> RecordStore::Newest(size_t count, IdKey& end) const {
    std::vector<RecordPtr> found;
    for (auto entry = byId_.lower_bound(end); entry != byId_.begin() && found.size() < count;) {
        --entry;
        end = *entry;
        found.push_back(records_.find(entry->second)->second);
    }
    return found;
}

std::vector<RecordStore::RecordPtr> RecordStore::From(uint64_t place) const {
    std::vector<RecordPtr> found;
    if (place == 0) found.reserve(records_.size());
    for (auto entry = records_.lower_bound(place); entry != records_.end(); ++entry)
        found.push_back(entry->second);
    return found;
}

uint64_t RecordStore::SumKB() const {
    uint64_t sum = 0;
    for (const auto& [place, record] : records_)
        sum += record->sizeKB;
    return sum;
}

void RecordStore::RemoveFromGroup(const std::string& game, const std::string& group,
                                  const std::set<int>& ids) {
    const auto found = games_.find(game);
    if (found == games_.end()) return;
    EraseFromGroup(found->second, group, ids);
    Erase(found->second.recents, ids);
}
