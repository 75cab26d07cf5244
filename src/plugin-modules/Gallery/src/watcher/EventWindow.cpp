#include "plugin-modules/Gallery/src/watcher/EventWindow.h"

#include <utility>

namespace watcher {
namespace {

constexpr uint32_t kKinds = ItemIsFile | ItemIsDir | ItemIsSymlink;

}  // namespace

void EventWindow::Add(const std::string& path, uint32_t flags, TimePoint now) {
    if (!closes_) closes_ = now + length_;
    const auto found = index_.find(path);
    if (found == index_.end()) {
        events_.push_back({path, flags});
        index_.emplace(events_.back().path, &events_.back());
        return;
    }
    WatchEvent& event = *found->second;
    if ((flags & kKinds) != 0) event.flags &= ~kKinds;
    event.flags |= flags;
}

std::deque<WatchEvent> EventWindow::Take() {
    closes_.reset();
    index_.clear();
    return std::exchange(events_, {});
}

}  // namespace watcher
