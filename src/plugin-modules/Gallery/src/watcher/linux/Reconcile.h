// What was last reported of each folder of the gallery, and how the disk differs from it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"
#include "plugin-modules/Gallery/src/watcher/linux/KnownItems.h"

namespace watcher {

struct Difference {
    std::string name;
    uint32_t flags = 0;                // WatchFlag bits
    const FoundItem* found = nullptr;  // in the snapshot; null for an item that is gone
};

// Items that are gone come first; what is Unknown is no difference.
std::vector<Difference> Reconcile(const KnownItems& known, const FolderSnapshot& disk);

// Its size is bounded by the number of files in the gallery.
class KnownTree {
  public:
    // Adds the folder, empty, if it is not known.
    KnownItems& Folder(const std::string& path) { return folders_[path]; }

    // Does nothing if the folder of `path` is not known: reading that folder will find the item.
    void Set(const std::string& path, const Stamp& stamp);
    void Erase(const std::string& path);
    // None if the item is not known.
    std::optional<Stamp> Find(const std::string& path) const;
    // Something has been reported at the path, but its state is unknown: it will count as changed.
    void SetUnseen(const std::string& path, bool folder);

    // Forgets everything below a folder and returns one event for each item.
    std::vector<WatchEvent> TakeBeneath(const std::string& folder, uint32_t flags);

  private:
    std::map<std::string, KnownItems> folders_;
};

}  // namespace watcher
