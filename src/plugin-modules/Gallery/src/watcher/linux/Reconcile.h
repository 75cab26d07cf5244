// What was last told of each folder of the gallery, and how that differs from what is on disk.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"

namespace watcher {

using KnownItems = std::unordered_map<std::string, Stamp>;  // by name

struct Difference {
    std::string name;
    uint32_t flags = 0;                // of WatchFlag
    const FoundItem* found = nullptr;  // in the snapshot; null for what is gone
};

// What is gone comes first.
std::vector<Difference> Reconcile(const KnownItems& known, const FolderSnapshot& disk);

// Grows with the number of files in the gallery and no further.
class KnownTree {
  public:
    // Makes an empty folder of one that is not known.
    KnownItems& Folder(const std::string& path) { return folders_[path]; }

    // What is in no known folder is not kept: it is found when the folder is looked at.
    void Set(const std::string& path, const Stamp& stamp);
    void Erase(const std::string& path);
    // Something is known to have been told there, but not what it was: it counts as changed.
    void SetUnseen(const std::string& path, bool folder);

    // Forgets all that is beneath a folder and gives it as events.
    std::vector<WatchEvent> TakeBeneath(const std::string& folder, uint32_t flags);

  private:
    std::map<std::string, KnownItems> folders_;
};

}  // namespace watcher
