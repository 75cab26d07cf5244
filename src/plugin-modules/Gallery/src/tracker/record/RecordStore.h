// The captures on record, in the order in which they were tracked, with the indexes that find them fast, the
// ids that were given out and the space that all take. Pure data: no disk, no lock; its owner guards it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

class RecordStore {
  public:
    // Records never change once they are in: a change replaces them. So a snapshot costs pointers alone, and
    // stays what it was while others track on.
    using RecordPtr = std::shared_ptr<const TrackedUGC>;
    using Games = std::map<std::string, TrackedUGCGame>;
    // A place in the order of ids; equal ids stand in the order of tracking.
    using IdKey = std::pair<int32_t, uint64_t>;

    RecordStore() = default;
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;

    // Ids start again from 1.
    void Clear();
    // Takes what a file held, as it stands: ids may repeat, and games may name ids that no record has.
    void Load(std::vector<TrackedUGC> records, Games games, int32_t lastId);

    // An id that was not given before.
    int32_t NextId();
    int32_t lastId() const { return lastId_; }
    // The sum of the records' sizes, but for those that Take took out. It stops at its largest value.
    uint32_t usageKB() const { return usageKB_; }

    // Adds the record at the end, and its id to its game and, for a highlight, to its group.
    RecordPtr Track(TrackedUGC record);

    struct Removed {
        std::vector<RecordPtr> records;  // in their order
        int withoutGame = 0;             // of these, those whose game was not there
    };
    // Removes all records of these paths that stand before the place, and their ids from their games. A game
    // without ids goes.
    Removed Remove(const std::vector<std::string>& paths, uint64_t before = UINT64_MAX);

    // Puts `record` in the place of the first one with its path and its id. Null when there is no such path.
    RecordPtr Change(TrackedUGC record);

    // Puts `record` in the place of the first one with its path, under a new id if need be: its game, made
    // when it is missing, and there the group of `record` then hold the new id where they held the old. Null
    // when there is no such path.
    RecordPtr Replace(TrackedUGC record);

    // The first record of the path or id; null when there is none.
    RecordPtr FindByPath(const std::string& path) const;
    RecordPtr FindById(int32_t id) const;
    // Those whose path begins with `prefix`, in their order.
    std::vector<RecordPtr> Under(const std::string& prefix) const;
    // Those of the game's ids that have a record, in the order of the ids in the game.
    std::vector<RecordPtr> OfGame(const std::string& game) const;
    // The highlights of a group, likewise.
    std::vector<RecordPtr> OfGroup(const std::string& game, const std::string& group) const;
    // At most `count` records below `end`, highest id first; `end` becomes the place of the last of them.
    std::vector<RecordPtr> Newest(size_t count, IdKey& end) const;
    static IdKey NewestEnd() { return {INT32_MAX, UINT64_MAX}; }

    size_t size() const { return records_.size(); }
    std::vector<RecordPtr> Snapshot() const { return From(0); }
    // Those that were tracked at place `place` or later. Places are given in order and never twice.
    std::vector<RecordPtr> From(uint64_t place) const;
    uint64_t nextPlace() const { return nextPlace_; }
    // Another number after each change but those that only add records at the end.
    uint64_t generation() const { return generation_; }
    uint64_t SumKB() const;
    const Games& games() const { return games_; }

    // Takes a record out and leaves its game and the usage as they are. Null when no record is all three.
    RecordPtr Take(int32_t id, const std::string& game, const std::string& group);
    // Takes ids out of a game's recents and one of its groups, which goes when it is then empty; the game
    // stays.
    void RemoveFromGroup(const std::string& game, const std::string& group, const std::set<int>& ids);

  private:
    using Records = std::map<uint64_t, RecordPtr>;

    RecordPtr Append(TrackedUGC record);
    RecordPtr Exchange(Records::const_iterator place, TrackedUGC record);
    RecordPtr Detach(Records::iterator record);
    void Index(uint64_t place, const TrackedUGC& record);
    void Unindex(uint64_t place, const TrackedUGC& record);
    Records::const_iterator FirstOfPath(const std::string& path) const;
    std::vector<RecordPtr> Collect(const std::vector<int>& ids) const;
    int RemoveFromGames(const std::vector<RecordPtr>& records);

    // By the number that each got when it was tracked.
    Records records_;
    uint64_t nextPlace_ = 0;
    uint64_t generation_ = 0;
    // The texts are those of the records.
    std::multimap<std::string_view, uint64_t> byPath_;
    std::set<IdKey> byId_;
    Games games_;
    int32_t lastId_ = 0;
    uint32_t usageKB_ = 0;
};
