// The records of a RecordStore, with indexes by place, id, path and folder. For RecordStore.cpp alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/mem_fun.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/ordered_index.hpp>
#include <boost/multi_index_container.hpp>

#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

inline size_t HashOf(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

inline std::string_view FolderOf(std::string_view path) {
    return path.substr(0, path.rfind('/'));
}

struct RecordEntry {
    using IdKey = std::pair<int32_t, uint64_t>;

    RecordEntry(uint64_t number, std::shared_ptr<const TrackedUGC> entered) : place(number) {
        Set(std::move(entered));
    }
    void Set(std::shared_ptr<const TrackedUGC> entered) {
        record = std::move(entered);
        pathHash = HashOf(record->path);
        folderHash = HashOf(FolderOf(record->path));
    }
    IdKey Id() const { return {record->id, place}; }

    uint64_t place;
    std::shared_ptr<const TrackedUGC> record;
    // Kept, since the texts are elsewhere in memory.
    size_t pathHash = 0;
    size_t folderHash = 0;
};

namespace record_index {

namespace mi = boost::multi_index;

// The indexes by their names.
struct ByPlace;
struct ById;
struct ByPath;
struct ByFolder;

using Place = mi::ordered_unique<mi::tag<ByPlace>, mi::member<RecordEntry, uint64_t, &RecordEntry::place>>;
using Id =
    mi::ordered_unique<mi::tag<ById>, mi::const_mem_fun<RecordEntry, RecordEntry::IdKey, &RecordEntry::Id>>;
using Path = mi::hashed_non_unique<mi::tag<ByPath>, mi::member<RecordEntry, size_t, &RecordEntry::pathHash>>;
using Folder =
    mi::hashed_non_unique<mi::tag<ByFolder>, mi::member<RecordEntry, size_t, &RecordEntry::folderHash>>;
using Container = mi::multi_index_container<RecordEntry, mi::indexed_by<Place, Id, Path, Folder>>;

}  // namespace record_index

struct RecordIndex : record_index::Container {
    // The entries of the path, in no order.
    std::vector<const RecordEntry*> Of(std::string_view path) const {
        std::vector<const RecordEntry*> entries;
        const auto [first, end] = get<record_index::ByPath>().equal_range(HashOf(path));
        for (auto entry = first; entry != end; ++entry)
            if (entry->record->path == path) entries.push_back(&*entry);
        return entries;
    }
};
