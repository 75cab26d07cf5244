#include "plugin-modules/Gallery/src/watcher/linux/WatchTree.h"

#include <cerrno>
#include <fstream>

#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

constexpr size_t kUsualLimit = 8192;  // when the system's limit cannot be read

size_t SystemLimit() {
    size_t limit = 0;
    std::ifstream file("/proc/sys/fs/inotify/max_user_watches");
    return file >> limit ? limit : kUsualLimit;
}

}  // namespace

WatchTree::WatchTree(size_t maxWatches) : limit_(maxWatches != 0 ? maxWatches : SystemLimit()) {}

bool WatchTree::Reopen() {
    Close();
    return inotify_.Open();
}

void WatchTree::Close() {
    inotify_.Close();
    byPath_.clear();
    byWatch_.clear();
}

Watched WatchTree::Watch(const std::string& folder, bool ofGallery, bool named) {
    if (!inotify_.IsOpen()) return Watched::LeftOut;
    if (byPath_.size() >= limit_ && byPath_.count(folder) == 0) return Watched::LeftOut;
    const int watch = inotify_.Watch(folder, ofGallery, named);
    if (watch >= 0) {
        Enter(folder, watch);
        return Watched::Yes;
    }
    const bool gone = errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENAMETOOLONG;
    return gone ? Watched::Gone : Watched::LeftOut;
}

void WatchTree::Enter(const std::string& folder, int watch) {
    const auto old = byPath_.find(folder);
    if (old != byPath_.end() && old->second == watch) return;
    if (old != byPath_.end()) Leave(old);
    // A folder that was moved keeps its watch, so the path that the watch had is out of date.
    const auto moved = byWatch_.find(watch);
    if (moved != byWatch_.end()) {
        byPath_.erase(moved->second);
        byWatch_.erase(moved);
    }
    byWatch_.emplace(watch, byPath_.emplace(folder, watch).first);
}

void WatchTree::Leave(ByPath::iterator entry) {
    inotify_.Unwatch(entry->second);
    byWatch_.erase(entry->second);
    byPath_.erase(entry);
}

void WatchTree::UnwatchWithBeneath(const std::string& folder) {
    const auto self = byPath_.find(folder);
    if (self != byPath_.end()) Leave(self);
    const auto [first, last] = Beneath(byPath_, folder);
    for (auto entry = first; entry != last;)
        Leave(entry++);
}

const std::string* WatchTree::FolderOf(int watch) const {
    const auto found = byWatch_.find(watch);
    return found == byWatch_.end() ? nullptr : &found->second->first;
}

void WatchTree::Forget(int watch) {
    const auto found = byWatch_.find(watch);
    if (found == byWatch_.end()) return;
    byPath_.erase(found->second);
    byWatch_.erase(found);
}

}  // namespace watcher
