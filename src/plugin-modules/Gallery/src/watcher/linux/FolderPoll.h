// Polls the modification times of folders that send no events: in rounds over all of them, some at a time.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"

namespace watcher {

// Whether the volume may be changed by other machines, for which the kernel sends no events.
bool IsOnNetwork(const std::string& path);

class FolderPoll {
  public:
    // `state` is the folder as it was before its content was read. A folder that has just changed counts as
    // changed in the next round too: a second change within the clock's resolution would not show.
    void Add(const std::string& folder, const Item& state);
    // It could not be read, and counts as changed in each round.
    void AddUnread(const std::string& folder) { folders_[folder] = {}; }
    bool IsUnread(const std::string& folder) const;
    std::vector<std::string> Unread() const;
    void Remove(const std::string& folder) { folders_.erase(folder); }
    void RemoveWithBeneath(const std::string& folder);
    void Clear() { folders_.clear(); }
    bool IsEmpty() const { return folders_.empty(); }

    void StartRound();
    bool InRound() const { return inRound_; }
    // Continues the round with the next `count` folders and returns those that have changed.
    std::vector<std::string> CheckNext(size_t count);

  private:
    std::map<std::string, Stamp> folders_;
    std::string reached_;  // the folder checked last in this round
    bool inRound_ = false;
};

}  // namespace watcher
