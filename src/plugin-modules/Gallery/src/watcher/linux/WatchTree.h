// Which folders are watched, by path and by the kernel's descriptor, within what the user may have.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>

#include "plugin-modules/Gallery/src/watcher/linux/Inotify.h"

namespace watcher {

enum class Watched {
    Yes,
    LeftOut,  // no watch to be had
    Gone,     // no folder there
};

class WatchTree {
  public:
    // 0 asks the system for the limit.
    explicit WatchTree(size_t maxWatches);

    // Starts anew, without a watch. False with errno set when the kernel has no more instances; then every
    // folder is left out.
    bool Reopen();
    void Close();
    Inotify& inotify() { return inotify_; }

    // Watches a folder, or goes on watching it. One that is not of the gallery gets a watch only while a
    // quarter of the limit is not used up. A `named` folder, which the user has told us, may be a link, and
    // tells of its own end.
    Watched Watch(const std::string& folder, bool ofGallery, bool named);
    void UnwatchWithBeneath(const std::string& folder);

    // Null for a watch that is no more, whose last events may still come. Valid until the next change.
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
