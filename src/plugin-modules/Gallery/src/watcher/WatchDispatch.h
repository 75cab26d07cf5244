// Takes an event to the callback: decides by what is on disk, logs, and calls.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"

namespace watcher {

// What is at a path. Links, pipes and devices count as neither file nor folder. Unknown: the path cannot be
// looked at, which does not mean that nothing is there.
enum class ItemKind { None, File, Folder, Other, Unknown };

// Whether `there`, which was found at the event's path, is the kind of item that the event names.
bool WatchedItemExists(const WatchEvent& event, ItemKind there);

// `index` numbers the events of one window, `id` those of the watcher; both are for the log. Call it with no
// KXP::Mutex held. Calls nothing when `there` is Unknown. An exception from the callback is logged; the
// result is then None. Returns the action taken.
WatchAction DispatchWatchEvent(int index, uint64_t id, const WatchEvent& event, ItemKind there,
                               IFileWatcherCallback& callback) noexcept;

}  // namespace watcher
