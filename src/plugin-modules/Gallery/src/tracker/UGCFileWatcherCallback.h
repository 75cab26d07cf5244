// From the watcher to the tracker.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

class UGCTracker;

class UGCFileWatcherCallback : public IFileWatcherCallback {
  public:
    // The watcher ends before the tracker. `ownFolder` holds the product's own files.
    UGCFileWatcherCallback(UGCTracker* tracker, std::string ownFolder);

    void Track(std::string path, bool isFolder) override;
    void Untrack(std::string path) override;

  private:
    bool IsOwnFile(const std::string& path) const;

    UGCTracker* const tracker_;
    const std::string ownFolder_;
};
