// The captures on record in the order of tracking, with indexes by path and id, the last id given out, and
// the total size. Pure data without disk access or locks; its owner guards it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

struct RecordEntry;
struct RecordIndex;

class RecordStore {
  public:
    // A record never changes; a change replaces it. So a snapshot copies only pointers and stays valid.
    using RecordPtr = std::shared_ptr<const TrackedUGC>;
    using Games = std::map<std::string, TrackedUGCGame>;
    // A position in the order of ids; equal ids are in the order of tracking.
    using IdKey = std::pair<int32_t, uint64_t>;

    RecordStore();
    ~RecordStore();
    RecordStore(const RecordStore&) = delete;
    RecordStore& operator=(const RecordStore&) = delete;

    // Removes everything; ids start again from 1.
    void Clear();
    // Takes the content of a file, which anybody can have edited. Games may list ids that no record has. If
    // two captures have the same id, or one has none, each further one gets a new id, and the games are made
    // anew from the records.
    void Load(std::vector<NewUGC> records, Games games, int32_t lastId);
    // The same with games that list what the records say.
    void Load(std::vector<NewUGC> records, int32_t lastId);

    // Makes room for so many records in all.
    void Reserve(size_t count);

    // Returns an id above all that were given out or are on record; 0 when there are none left.
    int32_t NextId();
    // Whether a record may have this id, which somebody else has chosen.
    bool IsFreeId(int32_t id) const { return id > 0 && !FindById(id); }
    int32_t lastId() const { return lastId_; }
    // The total size of the records and of those removed by Take. It stops at the largest value.
    uint32_t usageKB() const { return usageKB_; }

    // Adds the record at the end, and its id, which no other has, to its game and, for a highlight, to its
    // group.
    RecordPtr Track(NewUGC record);

    struct Removed {
        std::vector<RecordPtr> records;  // in the order of tracking
        int withoutGame = 0;             // how many of them had no game
    };
    // Removes all records of these paths that were tracked before place `before`, and their ids from their
    // games. Removes a game that has no ids left.
    Removed Remove(const std::vector<std::string>& paths, uint64_t before = UINT64_MAX);

    // Replaces the first record with the path of `record`. Null when there is no such path.
    RecordPtr Change(TrackedUGC record);

    // The same for a file with new content: the id stays, and the group and the usage follow.
    RecordPtr Renew(TrackedUGC record);

    // The same for a record whose id may have changed: in its game, which is added if it is missing, and in
    // the group of `record` there, the new id replaces the old one.
    RecordPtr Replace(TrackedUGC record);

    // The first record of the path or id; null when there is none.
    RecordPtr FindByPath(const std::string& path) const;
    RecordPtr FindById(int32_t id) const;
    // The records in the folder, in the order of tracking, or those in folders below it if it has none
    // itself.
    std::vector<RecordPtr> In(const std::string& folder) const;
    // The records of the game's ids, in the order of those ids. Ids without a record are skipped.
    std::vector<RecordPtr> OfGame(const std::string& game) const;
    // The highlights of a group, in the same way.
    std::vector<RecordPtr> OfGroup(const std::string& game, const std::string& group) const;
    // At most `count` records before `end`, highest id first; `end` is set to the position of the last of
    // them.
    std::vector<RecordPtr> Newest(size_t count, IdKey& end) const;
    static IdKey NewestEnd() { return {INT32_MAX, UINT64_MAX}; }

    size_t size() const;
    std::vector<RecordPtr> Snapshot() const { return From(0); }
    // The records tracked at `place` or later. A place is a number that grows with each record and never
    // repeats.
    std::vector<RecordPtr> From(uint64_t place) const;
    uint64_t nextPlace() const { return nextPlace_; }
    // Changes with every change except one that only adds records at the end.
    uint64_t generation() const { return generation_; }
    uint64_t SumKB() const;
    const Games& games() const { return games_; }

    // The record with this id, game and group; null when there is none.
    RecordPtr Find(int32_t id, const std::string& game, const std::string& group) const;
    // Removes the one with those of `record`, and leaves its game and the usage unchanged. Takes no memory,
    // nor does RemoveFromGroup.
    void Take(const TrackedUGC& record);
    // Removes ids from a game's recents and from one of its groups. Removes a group that is then empty, but
    // not the game.
    void RemoveFromGroup(const std::string& game, const std::string& group, const std::set<int>& ids);

  private:
    bool HasUniqueIds() const;
    void RepairIds();
    void ListInGame(const TrackedUGC& record);
    void Unlist(const TrackedUGC& record);
    void Touch(TrackedUGCGame& game) { game.version = ++gameVersion_; }
    const RecordEntry* FindIn(int32_t id, const std::string& game, const std::string& group) const;
    RecordPtr Append(NewUGC record);
    RecordPtr Exchange(const RecordEntry& old, TrackedUGC record);
    RecordPtr Detach(uint64_t place);
    void AddUsage(uint32_t sizeKB);
    const RecordEntry* FirstOfPath(const std::string& path) const;
    std::vector<RecordPtr> Collect(const std::vector<int>& ids) const;
    int RemoveFromGames(const std::vector<RecordPtr>& records);

    const std::unique_ptr<RecordIndex> records_;
    TextPool texts_;
    uint64_t nextPlace_ = 0;
    uint64_t generation_ = 0;
    Games games_;
    uint64_t gameVersion_ = 0;  // the last one given to a game
    int32_t lastId_ = 0;
    uint32_t usageKB_ = 0;
};
