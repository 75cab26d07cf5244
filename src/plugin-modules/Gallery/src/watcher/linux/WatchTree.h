// The watched folders, by path and by the kernel's descriptor, within the user's limit of watches.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>

#include "plugin-modules/Gallery/src/watcher/linux/Inotify.h"

namespace watcher {

enum class Watched {
    Yes,
    LeftOut,  // there was no watch for it
    Gone,     // there is no such folder
};

class WatchTree {
  public:
    // 0 takes the system's limit.
    explicit WatchTree(size_t maxWatches);

    // Starts again without any watch. Returns false, with errno set, when the kernel has no more instances;
    // then every folder is left out.
    bool Reopen();
    void Close();
    Inotify& inotify() { return inotify_; }

    // Watches a folder, or keeps watching it. Writes are reported only of files of the gallery. A `named`
    // folder, one that the user has chosen, may be a link, and its own removal or move is reported.
    Watched Watch(const std::string& folder, bool ofGallery, bool named);
    void UnwatchWithBeneath(const std::string& folder);

    // Null for a watch that has ended; its last events may still arrive. Valid until the next change.
    const std::string* FolderOf(int watch) const;
    // The kernel has ended the watch.
    void Forget(int watch);

  private:
    using ByPath = std::map<std::string, int>;

    void Enter(const std::string& folder, int watch);
    void Leave(ByPath::iterator entry);

    const size_t limit_;
    Inotify inotify_;
    ByPath byPath_;
    std::unordered_map<int, ByPath::iterator> byWatch_;
};

}  // namespace watcher
