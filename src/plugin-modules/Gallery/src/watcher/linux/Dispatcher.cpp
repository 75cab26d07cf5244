#include "plugin-modules/Gallery/src/watcher/linux/Dispatcher.h"

#include <algorithm>
#include <cstddef>

namespace watcher {
namespace {

// Events reported between two reads of the kernel's queue.
constexpr size_t kEventsPerPass = 256;

}  // namespace

void Dispatcher::Begin(std::deque<WatchEvent> events) {
    events_ = std::move(events);
    const auto isNamed = [this](const WatchEvent& event) { return follower_.IsNamed(event.path); };
    const auto named = std::find_if(events_.begin(), events_.end(), isNamed);
    if (named == events_.end() || LookAt(named->path, true).kind != ItemKind::Folder) return;
    // The gallery is back, or another one. Whoever is notified of it looks into it and would find the old
    // content gone without a notice, so what has gone is reported first.
    std::stable_partition(named, events_.end(), [&](const WatchEvent& event) {
        return (event.flags & (ItemRemoved | ItemRenamed)) != 0 && (event.flags & ItemCreated) == 0 &&
               !isNamed(event);
    });
}

void Dispatcher::ReportSome(const std::atomic<bool>& stop) {
    for (size_t left = kEventsPerPass; left > 0 && !events_.empty() && !stop; --left) {
        const WatchEvent event = std::move(events_.front());
        events_.pop_front();
        const Item item = LookAt(event.path, follower_.IsNamed(event.path));
        if (WentWithItsFolder(event, item.kind)) continue;
        const WatchAction action = DispatchWatchEvent(index_++, ++id_, event, item.kind, callback_);
        follower_.NoteReported(event, action, item);
        if (action == WatchAction::Untrack && (event.flags & ItemIsDir) != 0) goneFolders_.insert(event.path);
    }
    if (events_.empty()) End();
}

void Dispatcher::End() {
    goneFolders_.clear();
    index_ = 0;
}

// Untracking a folder includes its files, so their own events are not reported.
bool Dispatcher::WentWithItsFolder(const WatchEvent& event, ItemKind there) const {
    if (goneFolders_.empty() || WatchedItemExists(event, there)) return false;
    for (size_t slash = event.path.rfind('/'); slash != std::string::npos && slash > 0;
         slash = event.path.rfind('/', slash - 1)) {
        if (goneFolders_.count(event.path.substr(0, slash)) > 0) return true;
    }
    return false;
}

}  // namespace watcher
