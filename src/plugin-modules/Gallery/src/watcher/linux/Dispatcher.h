// From closed windows to the callback.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <utility>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDispatch.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

namespace watcher {

// Reports the events of a closed window in their order, some at a time. One thread.
class Dispatcher {
  public:
    Dispatcher(IFileWatcherCallback& callback, TreeFollower& follower)
        : callback_(callback), follower_(follower) {}

    bool IsIdle() const { return events_.empty(); }
    // Not reported yet.
    const std::deque<WatchEvent>& events() const { return events_; }
    void Begin(std::deque<WatchEvent> events);
    void ReportSome(const std::atomic<bool>& stop);

  private:
    bool WentWithItsFolder(const WatchEvent& event, ItemKind there) const;
    void End();

    IFileWatcherCallback& callback_;
    TreeFollower& follower_;
    std::deque<WatchEvent> events_;
    std::set<std::string> goneFolders_;  // untracked in this window
    int index_ = 0;
    uint64_t id_ = 0;
};

}  // namespace watcher
