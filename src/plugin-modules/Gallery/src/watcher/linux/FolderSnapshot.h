// What is on disk: one item, or the files and folders in one folder, without links, pipes and devices.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"

namespace watcher {

// Shows whether an item has changed. A folder stays the same whatever happens to its content.
struct Stamp {
    bool folder = false;
    uint64_t inode = 0;
    int64_t size = 0;
    int64_t modifiedNs = 0;  // since 1970

    bool operator==(const Stamp& other) const {
        if (folder != other.folder || inode != other.inode) return false;
        return folder || (size == other.size && modifiedNs == other.modifiedNs);
    }
    bool operator!=(const Stamp& other) const { return !(*this == other); }
};

struct Item {
    ItemKind kind = ItemKind::None;
    Stamp stamp;
    uint64_t volume = 0;
    int64_t changedNs = 0;  // since 1970; naming, linking and moving count as a change
    uint64_t links = 0;
};

Item ItemOf(const struct stat& status);

// The kind is None only when nothing can be there. `follow` follows a link at the path itself.
Item LookAt(const std::string& path, bool follow = false);

// The current time, on the clock of the times above.
int64_t FileClockNs();

struct FoundItem {
    std::string name;
    Item item;
};

struct FolderSnapshot {
    // Takes in what was found under a name. A link is Other.
    void Add(std::string_view name, const Item& item);

    Item folder;  // as it was before its entries were read
    std::vector<FoundItem> entries;
    bool allKnown = true;    // no entry is Unknown
    bool illegible = false;  // whether a name is not UTF-8
};

// `follow` follows a link at `folder` itself. Returns false when the folder cannot be read to its end or
// `stop` is set meanwhile. Entries that cannot be looked at are in the snapshot, as Unknown.
bool TakeSnapshot(const std::string& folder, bool follow, const std::atomic<bool>& stop,
                  FolderSnapshot& snapshot);

}  // namespace watcher
