// From an event to the callback: asks the disk, decides, logs and calls.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/tracker/FileWatcher.h"
#include "plugin-modules/Gallery/src/tracker/WatchDecision.h"

namespace watcher {

// Whether what the event is about is there now, as the kind of item that the event says.
bool WatchedItemExists(const WatchEvent& event);

// `index` counts within a batch, `id` across them. Never throws: what the callback throws is logged. No lock
// may be held. Gives what was decided.
WatchAction DispatchWatchEvent(int index, uint64_t id, const WatchEvent& event,
                               IFileWatcherCallback& callback) noexcept;

}  // namespace watcher
