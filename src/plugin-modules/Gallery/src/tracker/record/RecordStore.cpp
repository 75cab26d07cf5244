#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"

#include <algorithm>
#include <string_view>

#include "plugin-modules/Gallery/src/tracker/record/RecordIndex.h"

namespace {

using record_index::ByFolder;
using record_index::ById;
using record_index::ByPath;

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
    return std::string(TrackedUGC::IsAHighlight(record) ? record.highlightGroupId.view()
                                                        : std::string_view());
}

}  // namespace

RecordStore::RecordStore() : records_(std::make_unique<RecordIndex>()) {}

RecordStore::~RecordStore() = default;

size_t RecordStore::size() const {
    return records_->size();
}

void RecordStore::Clear() {
    ++generation_;
    records_->clear();
    games_.clear();
    lastId_ = 0;
    usageKB_ = 0;
}

void RecordStore::Reserve(size_t count) {
    records_->get<ByPath>().reserve(count);
    records_->get<ByFolder>().reserve(count);
}

int32_t RecordStore::NextId() {
    return lastId_ < INT32_MAX ? ++lastId_ : 0;
}

void RecordStore::Load(std::vector<NewUGC> records, Games games, int32_t lastId) {
    Clear();
    lastId_ = lastId;
    Reserve(records.size());
    for (NewUGC& record : records)
        Append(std::move(record));
    games_ = std::move(games);
    for (auto& [name, game] : games_)
        Touch(game);
    if (size() > 0) lastId_ = std::max(lastId_, records_->get<ById>().rbegin()->record->id);
    lastId_ = std::max(lastId_, 0);
    if (!HasUniqueIds()) RepairIds();
}

void RecordStore::Load(std::vector<NewUGC> records, int32_t lastId) {
    Load(std::move(records), {}, lastId);
    games_.clear();
    for (const RecordEntry& entry : *records_)
        ListInGame(*entry.record);
}

// A record without a path is of no capture, and goes with the next list.
bool RecordStore::HasUniqueIds() const {
    int32_t before = 0;
    for (const RecordEntry& entry : records_->get<ById>()) {
        if (entry.record->path.empty()) continue;
        if (entry.record->id <= before) return false;
        before = entry.record->id;
    }
    return true;
}

void RecordStore::RepairIds() {
    games_.clear();
    std::set<int32_t> taken;
    for (const RecordEntry& entry : *records_) {
        TrackedUGC record = *entry.record;
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
    Touch(game);
    game.recents.push_back(record.id);
    if (const std::string group = GroupOf(record); !group.empty()) game.groups[group].push_back(record.id);
}

RecordStore::RecordPtr RecordStore::Track(NewUGC record) {
    record->ShareTexts(texts_);
    const uint64_t place = nextPlace_;
    RecordPtr entered = Append(std::move(record));
    lastId_ = std::max(lastId_, entered->id);
    try {
        ListInGame(*entered);
    } catch (...) {
        Unlist(*entered);
        (void)Detach(place);
        usageKB_ -= std::min(usageKB_, entered->sizeKB);
        throw;
    }
    return entered;
}

// Takes no memory.
void RecordStore::Unlist(const TrackedUGC& record) {
    const auto game = games_.find(record.profileName);
    if (game == games_.end()) return;
    Touch(game->second);
    const auto erase = [&record](std::vector<int>& ids) {
        ids.erase(std::remove(ids.begin(), ids.end(), record.id), ids.end());
    };
    erase(game->second.recents);
    const auto group = game->second.groups.find(record.highlightGroupId);
    if (group != game->second.groups.end()) {
        erase(group->second);
        if (group->second.empty()) game->second.groups.erase(group);
    }
    if (game->second.recents.empty() && game->second.groups.empty()) games_.erase(game);
}

RecordStore::RecordPtr RecordStore::Append(NewUGC record) {
    const uint64_t place = nextPlace_++;
    RecordPtr entered = std::move(record);
    records_->insert(records_->end(), RecordEntry(place, entered));
    AddUsage(entered->sizeKB);
    return entered;
}

void RecordStore::AddUsage(uint32_t sizeKB) {
    usageKB_ += std::min(sizeKB, UINT32_MAX - usageKB_);
}

RecordStore::Removed RecordStore::Remove(const std::vector<std::string>& paths, uint64_t before) {
    std::set<uint64_t> places;
    // Each path once: if a file had the same path in all records, the time would be quadratic.
    for (const std::string_view path : std::set<std::string_view>(paths.begin(), paths.end())) {
        for (const RecordEntry* entry : records_->Of(path))
            if (entry->place < before) places.insert(entry->place);
    }
    Removed removed;
    for (const uint64_t place : places)
        removed.records.push_back(records_->find(place)->record);
    removed.withoutGame = RemoveFromGames(removed.records);
    for (const uint64_t place : places)
        usageKB_ -= std::min(usageKB_, Detach(place)->sizeKB);
    return removed;
}

RecordStore::RecordPtr RecordStore::Detach(uint64_t place) {
    ++generation_;
    const auto entry = records_->find(place);
    RecordPtr detached = entry->record;
    records_->erase(entry);
    return detached;
}

const RecordEntry* RecordStore::FindIn(int32_t id, const std::string& game, const std::string& group) const {
    const auto& byId = records_->get<ById>();
    for (auto entry = byId.lower_bound(IdKey(id, 0)); entry != byId.end() && entry->record->id == id; ++entry)
        if (entry->record->profileName == game && entry->record->highlightGroupId == group) return &*entry;
    return nullptr;
}

RecordStore::RecordPtr RecordStore::Find(int32_t id, const std::string& game,
                                         const std::string& group) const {
    const RecordEntry* const found = FindIn(id, game, group);
    return found ? found->record : nullptr;
}

void RecordStore::Take(const TrackedUGC& record) {
    if (const RecordEntry* const found = FindIn(record.id, record.profileName, record.highlightGroupId))
        (void)Detach(found->place);
}

// Takes its memory before it changes anything.
int RecordStore::RemoveFromGames(const std::vector<RecordPtr>& records) {
    struct Ids {
        Games::iterator game;
        std::set<int> all;
        std::map<std::string, std::set<int>> byGroup;
    };
    int withoutGame = 0;
    std::map<std::string_view, Ids> byGame;
    for (const RecordPtr& record : records) {
        const auto game = games_.find(record->profileName);
        if (game == games_.end()) {
            ++withoutGame;
            continue;
        }
        Ids& ids = byGame[record->profileName];
        ids.game = game;
        ids.all.insert(record->id);
        if (TrackedUGC::IsAHighlight(*record)) ids.byGroup[record->highlightGroupId].insert(record->id);
    }
    for (const auto& [name, ids] : byGame) {
        TrackedUGCGame& game = ids.game->second;
        Touch(game);
        for (const auto& [group, groupIds] : ids.byGroup)
            EraseFromGroup(game, group, groupIds);
        Erase(game.recents, ids.all);
        if (game.recents.empty() && game.groups.empty()) games_.erase(ids.game);
    }
    return withoutGame;
}

RecordStore::RecordPtr RecordStore::Replace(TrackedUGC record) {
    const RecordEntry* const found = FirstOfPath(record.path);
    if (!found) return nullptr;
    const RecordPtr old = found->record;
    RecordPtr entered = Exchange(*found, std::move(record));
    lastId_ = std::max(lastId_, entered->id);
    TrackedUGCGame& game = games_[old->profileName];
    game.appName = old->profileName;
    Touch(game);
    std::replace(game.recents.begin(), game.recents.end(), old->id, entered->id);
    std::vector<int>& group = game.groups[entered->highlightGroupId];
    std::replace(group.begin(), group.end(), old->id, entered->id);
    return entered;
}

RecordStore::RecordPtr RecordStore::Change(TrackedUGC record) {
    const RecordEntry* const found = FirstOfPath(record.path);
    return found ? Exchange(*found, std::move(record)) : nullptr;
}

RecordStore::RecordPtr RecordStore::Renew(TrackedUGC record) {
    const RecordEntry* const found = FirstOfPath(record.path);
    if (!found) return nullptr;
    const RecordPtr old = found->record;
    record.id = old->id;
    RecordPtr entered = Exchange(*found, std::move(record));
    usageKB_ -= std::min(usageKB_, old->sizeKB);
    AddUsage(entered->sizeKB);
    const std::string group = GroupOf(*entered);
    if (group != GroupOf(*old)) {
        TrackedUGCGame& game = games_[entered->profileName];
        Touch(game);
        EraseFromGroup(game, GroupOf(*old), {old->id});
        if (!group.empty()) game.groups[group].push_back(entered->id);
    }
    return entered;
}

RecordStore::RecordPtr RecordStore::Exchange(const RecordEntry& old, TrackedUGC record) {
    record.ShareTexts(texts_);
    ++generation_;
    RecordPtr entered = std::make_shared<const TrackedUGC>(std::move(record));
    records_->modify(records_->iterator_to(old), [&](RecordEntry& entry) { entry.Set(entered); });
    return entered;
}

const RecordEntry* RecordStore::FirstOfPath(const std::string& path) const {
    const std::vector<const RecordEntry*> entries = records_->Of(path);
    const auto earliest =
        std::min_element(entries.begin(), entries.end(),
                         [](const RecordEntry* a, const RecordEntry* b) { return a->place < b->place; });
    return earliest == entries.end() ? nullptr : *earliest;
}

RecordStore::RecordPtr RecordStore::FindByPath(const std::string& path) const {
    const RecordEntry* const found = FirstOfPath(path);
    return found ? found->record : nullptr;
}

RecordStore::RecordPtr RecordStore::FindById(int32_t id) const {
    const auto& byId = records_->get<ById>();
    const auto found = byId.lower_bound(IdKey(id, 0));
    return found == byId.end() || found->record->id != id ? nullptr : found->record;
}

std::vector<RecordStore::RecordPtr> RecordStore::In(const std::string& folder) const {
    std::map<uint64_t, RecordPtr> inFolder;
    const auto [first, end] = records_->get<ByFolder>().equal_range(HashOf(folder));
    for (auto entry = first; entry != end; ++entry)
        if (FolderOf(entry->record->path) == folder) inFolder.emplace(entry->place, entry->record);
    std::vector<RecordPtr> found;
    found.reserve(inFolder.size());
    for (auto& [place, record] : inFolder)
        found.push_back(std::move(record));
    if (!found.empty()) return found;
    const std::string prefix = folder + "/";
    for (const RecordEntry& entry : *records_)
        if (entry.record->path.compare(0, prefix.size(), prefix) == 0) found.push_back(entry.record);
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
    const auto& byId = records_->get<ById>();
    for (auto entry = byId.lower_bound(end); entry != byId.begin() && found.size() < count;) {
        --entry;
        end = entry->Id();
        found.push_back(entry->record);
    }
    return found;
}

std::vector<RecordStore::RecordPtr> RecordStore::From(uint64_t place) const {
    std::vector<RecordPtr> found;
    if (place == 0) found.reserve(size());
    for (auto entry = records_->lower_bound(place); entry != records_->end(); ++entry)
        found.push_back(entry->record);
    return found;
}

uint64_t RecordStore::SumKB() const {
    uint64_t sum = 0;
    for (const RecordEntry& entry : *records_)
        sum += entry.record->sizeKB;
    return sum;
}

void RecordStore::RemoveFromGroup(const std::string& game, const std::string& group,
                                  const std::set<int>& ids) {
    const auto found = games_.find(game);
    if (found == games_.end()) return;
    Touch(found->second);
    EraseFromGroup(found->second, group, ids);
    Erase(found->second.recents, ids);
}
