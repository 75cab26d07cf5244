// From an event to the callback: decides by what is on disk, logs and calls.
#pragma once

#include <cstdint>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"

namespace watcher {

// What lies at a path. Links, pipes and devices are neither file nor folder, and so nothing.
enum class ItemKind { None, File, Folder, Other };

// Whether `there`, found at the event's path, is of the kind that the event is about.
bool WatchedItemExists(const WatchEvent& event, ItemKind there);

// `index` counts within a batch, `id` across them. Never throws: what the callback throws is logged. No lock
// may be held. Returns what was decided.
WatchAction DispatchWatchEvent(int index, uint64_t id, const WatchEvent& event, ItemKind there,
                               IFileWatcherCallback& callback) noexcept;

}  // namespace watcher
