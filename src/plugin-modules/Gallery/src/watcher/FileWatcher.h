// Reports changes of files and folders below a folder. The watcher's own thread, "FILE", makes every call of
// the callback; an exception from the callback is logged and dropped.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/FolderVisitor.h"

// The calls may repeat what the callback knows already, so it has to be idempotent. None may destroy the
// watcher.
class IFileWatcherCallback {
  public:
    virtual ~IFileWatcherCallback() = default;
    // There is a complete file or a folder at the path: new, moved in or changed.
    virtual void Track(std::string path, bool isFolder) = 0;
    // The file or folder at the path is gone; for a folder this includes its contents.
    virtual void Untrack(std::string path) = 0;
    // Modification times at the path, or of the folders around it, may have changed, and neither call above
    // says so: a link or pipe, a name that is not UTF-8 (the path is then that of the folder around it), the
    // times of a folder, a file that is not complete yet. At most once in each window for each path.
    virtual void Disturbed(std::string path) = 0;
};

// What the callback does not know yet.
struct UnreportedPaths {
    // Tracked or untracked soon; also files that were created and not closed, but not written to of late.
    std::vector<std::string> changed;
    // Files that are being written, and files and folders of the gallery that cannot be looked at.
    std::vector<std::string> incomplete;
    std::vector<std::string> disturbed;
    // Every change in the gallery causes an event. If not, what has changed may be noticed late or, in files
    // that keep their folder's time, not at all.
    bool exact = false;
};

// The destructor ends the thread between two calls of the callback and drops changes not reported by then.
class IFileWatcher {
  public:
    virtual ~IFileWatcher() = default;

    // As of the time of the call; a path may be repeated. No value when a list would have more than `most`
    // paths, or when the watcher's thread has not caught up with the disk after about 200 ms, for which this
    // waits. Any thread but the watcher's.
    virtual std::optional<UnreportedPaths> Unreported(size_t most) = 0;
};

struct WatcherOptions {
    // A folder in the watched one. It is watched with everything below it; of the watched folder only its own
    // entries are. Empty means the watched folder itself.
    std::string gallery;
    // An event opens a window of this length; all events in it are reported together.
    std::chrono::milliseconds window{1000};
    // How long a file must stay unchanged to count as complete when no event says that it was closed.
    std::chrono::milliseconds settle{1000};
    // How often folders without events are checked, and whether the watched folder is still the same one.
    std::chrono::milliseconds pollInterval{5000};
    std::chrono::milliseconds networkPollInterval{30000};
    // How long CreateFileWatcher may wait until the whole gallery is watched.
    std::chrono::milliseconds startLimit{500};
    // The most watches to use; 0 takes the system's limit.
    size_t maxWatches = 0;
    // Uses no events of the system and only polls folders.
    bool polling = false;
};

// Walks through the gallery for a purpose of its own, and shows the visitor what it finds.
using GalleryWalk = std::function<void(KXP::IFolderVisitor&)>;

// Watches `path` and, below it, the gallery. Files that exist when the call returns count as known. Returns
// null, and logs, when no thread can be started.
//
// `walk` may be null and is called at most once, by this thread. A folder is watched from the moment when the
// walk enters it, and the watcher reads only what the walk has not; not every platform has a use for it.
std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options = {},
                                                const GalleryWalk& walk = {});

// Does nothing: each watcher ends in its destructor.
void StopAndJoinFileWatcher();
