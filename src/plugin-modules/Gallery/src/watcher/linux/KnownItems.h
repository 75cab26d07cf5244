// The items of one folder by name, in little memory: a folder may hold many.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"

namespace watcher {

// Names have no zero byte. One thread.
class KnownItems {
  public:
    bool IsEmpty() const { return count_ == 0; }
    // Makes room for so many items in all.
    void Reserve(size_t count);
    void Set(std::string_view name, const Stamp& stamp);
    void Erase(std::string_view name);
    std::optional<Stamp> Find(std::string_view name) const;

    // Calls `visit` with each name and stamp, in no order; it must not change the items.
    template <typename Visit>
    void ForEach(Visit visit) const {
        for (const Row& row : rows_)
            if (!row.gone) visit(NameOf(row), StampOf(row));
    }

  private:
    struct Row {
        uint64_t inode;
        int64_t size;
        int64_t modifiedNs;
        uint32_t name;  // offset in the names
        bool folder;
        bool gone;
    };

    std::string_view NameOf(const Row& row) const { return &names_[row.name]; }
    static Stamp StampOf(const Row& row) { return {row.folder, row.inode, row.size, row.modifiedNs}; }
    size_t SlotOf(std::string_view name) const;
    void Rebuild(size_t count);

    std::vector<Row> rows_;
    std::string names_;  // each ends with a zero byte
    // A hash table with open addressing, of indexes of rows plus one; 0 is free. Their number is a power of
    // two.
    std::vector<uint32_t> slots_;
    size_t count_ = 0;  // rows that are not gone
};

}  // namespace watcher
