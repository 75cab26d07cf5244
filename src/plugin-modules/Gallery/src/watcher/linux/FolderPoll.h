// Looks at the times of folders from which no events come: a round over all of them, in small steps.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"

namespace watcher {

// Whether other machines may change the volume, of which the kernel tells nothing.
bool IsOnNetwork(const std::string& path);

class FolderPoll {
  public:
    // The folder as it was before its content was read. One that has just changed is due again at once, for
    // the next change might leave its time as it is.
    void Add(const std::string& folder, const Item& state);
    // Read in the next round whatever its time.
    void AddUnread(const std::string& folder) { folders_[folder] = {}; }
    void RemoveWithBeneath(const std::string& folder);
    void Clear() { folders_.clear(); }
    bool IsEmpty() const { return folders_.empty(); }

    void StartRound();
    bool InRound() const { return inRound_; }
    // Goes on with the round; gives the folders that have changed, of the next `count`.
    std::vector<std::string> Step(size_t count);

  private:
    std::map<std::string, Stamp> folders_;
    std::string reached_;  // by the round
    bool inRound_ = false;
};

}  // namespace watcher
