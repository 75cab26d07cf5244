// Reports changes of files and folders below a folder. The watcher's own thread, "FILE", makes every call of
// the callback; an exception from the callback is logged and dropped.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Both calls may repeat what the callback knows already, so it has to be idempotent. Neither may destroy the
// watcher.
class IFileWatcherCallback {
  public:
    virtual ~IFileWatcherCallback() = default;
    // There is a complete file or a folder at the path: new, moved in or changed.
    virtual void Track(std::string path, bool isFolder) = 0;
    // The file or folder at the path is gone; for a folder this includes its contents.
    virtual void Untrack(std::string path) = 0;
    // Something that is neither a file nor a folder has come, gone or changed there, or a time has.
    virtual void Disturbed(std::string /*path*/) {}
};

// What the callback does not know yet.
struct UnreportedPaths {
    std::vector<std::string> changed;
    std::vector<std::string> incomplete;  // files that are being written
};

// The destructor ends the thread between two calls of the callback and drops changes not reported by then.
class IFileWatcher {
  public:
    virtual ~IFileWatcher() = default;

    // As of the time of the call. No value when it is unknown, or when either list would have more than
    // `most` paths. Waits for the watcher's thread, about 100 ms at most. Any thread but the watcher's.
    virtual std::optional<UnreportedPaths> Unreported(size_t most) = 0;
};

struct WatcherOptions {
    // The folder below the watched one in which no change may be missed; empty means the whole tree.
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

// Watches `path` and everything below it. Files that exist when the call returns count as known. Returns
// null, and logs, when no thread can be started.
std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options = {});

// Does nothing: each watcher ends in its destructor.
void StopAndJoinFileWatcher();
