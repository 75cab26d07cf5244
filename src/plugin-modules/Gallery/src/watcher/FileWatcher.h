// Reports what happens to files and folders beneath a folder. One thread of its own, "FILE", makes every call
// of the callback; what the callback throws is logged and goes no further.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Both calls may come for what is known already, or known to be gone: the callback is idempotent. Neither may
// destroy the watcher.
class IFileWatcherCallback {
  public:
    virtual ~IFileWatcherCallback() = default;
    // A file that is complete, or a folder, is there: new, moved in or changed.
    virtual void Track(std::string path, bool isFolder) = 0;
    // What was at the path is gone; a folder goes with all that was in it.
    virtual void Untrack(std::string path) = 0;
};

// Destroying it ends the thread between two calls of the callback; what was not reported by then is dropped.
class IFileWatcher {
  public:
    virtual ~IFileWatcher() = default;

    // The paths of news that the callback has not heard of at the time of the call, and of files that are
    // being written at that time. No value when these are not known or too many. Waits for the watcher's
    // thread, some 100 ms at most. Any thread but that one.
    virtual std::optional<std::vector<std::string>> Untold() = 0;
};

struct WatcherOptions {
    // The folder beneath the watched one where nothing may be missed; empty stands for the whole.
    std::string gallery;
    // The first event of a quiet watcher and all that follow for this long are reported together.
    std::chrono::milliseconds window{1000};
    // For this long a file must stay as it is where nothing but its times can show that it is complete.
    std::chrono::milliseconds settle{1000};
    // How often folders are looked at from which no events come, and the watched folder itself.
    std::chrono::milliseconds pollInterval{5000};
    std::chrono::milliseconds networkPollInterval{30000};
    // How long the constructor may wait until the whole gallery is watched.
    std::chrono::milliseconds startLimit{500};
    // Watches to be had from the system; 0 asks it.
    size_t maxWatches = 0;
    // Without events from the system, by looking at folders alone.
    bool polling = false;
};

// Watches `path` and all beneath it. What is there when the call returns is taken as known. Null, and logged,
// when there is no thread to be had.
std::unique_ptr<IFileWatcher> CreateFileWatcher(const std::string& path,
                                                std::unique_ptr<IFileWatcherCallback>&& callback,
                                                const WatcherOptions& options = {});

// Nothing is shared between watchers, so there is nothing to stop.
void StopAndJoinFileWatcher();
