// Passes the watcher's reports to the tracker.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

class UGCTracker;

class UGCFileWatcherCallback : public IFileWatcherCallback {
  public:
    // `tracker` outlives it. `ownFolder` holds the product's own files, which are not captures.
    UGCFileWatcherCallback(UGCTracker* tracker, std::string ownFolder);

    void Track(std::string path, bool isFolder) override;
    void Untrack(std::string path) override;
    void Disturbed(std::string path) override;

  private:
    bool IsOwnFile(const std::string& path) const;

    UGCTracker* const tracker_;
    const std::string ownFolder_;
};
