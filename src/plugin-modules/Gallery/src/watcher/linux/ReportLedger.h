// Decides what has to be reported, puts it into the window, and records it so that nothing is reported twice
// or forgotten. That record covers the gallery; outside of it there is none. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"
#include "plugin-modules/Gallery/src/watcher/linux/Reconcile.h"

namespace watcher {

class ReportLedger {
  public:
    ReportLedger(std::string gallery, std::chrono::milliseconds settle, EventWindow& window)
        : gallery_(std::move(gallery)), settle_(settle), window_(window) {}

    bool IsInGallery(const std::string& path) const;

    // An item that has changed since this time, by the clock of files, is reported even by a silent Compare.
    void SetNewsFrom(int64_t changedNs) { newsFromNs_ = changedNs; }
    bool IsNews(const Item& item) const { return item.changedNs >= newsFromNs_; }

    // The file was closed after writing, moved or linked there; `flag` says which.
    void FileComplete(const std::string& path, uint32_t flag);
    // A file has got this name. A linked file is complete; a created one has yet to be written.
    void FileNamed(const std::string& path);
    void FileGone(const std::string& path, uint32_t flag);

    // Reports the folder alone; reading it finds its content.
    void FolderAppeared(const std::string& path, uint32_t flag);
    // Reports the folder and everything in it.
    void FolderGone(const std::string& path, uint32_t flag);

    // Reports how the folder differs from what was reported of it; with `silent` it only records that.
    // Returns the paths of the folders in it that are new and of those that are gone.
    struct Folders {
        std::vector<std::string> appeared;
        std::vector<std::string> gone;
    };
    Folders Compare(const std::string& folder, const FolderSnapshot& disk, bool silent);

    // Records the action taken for an event and what was at its path. If an item that disappeared is back by
    // then, the listener still knows it, so its next disappearance must be reported.
    void NoteReported(const WatchEvent& event, WatchAction action, const Item& item);

    std::vector<std::string> UnsettledPaths() const {
        std::vector<std::string> paths;
        for (const auto& [path, entry] : unsettled_)
            paths.push_back(path);
        return paths;
    }
    // When LookAgain is due, which reports the files that have become complete.
    TimePoint NextLook() const { return nextLook_; }
    void LookAgain(TimePoint now);

  private:
    struct Unsettled {
        Stamp stamp;
        TimePoint seen;
        bool news = true;  // has to be reported even if it does not change any more
    };

    void Report(const std::string& path, uint32_t flags);
    void Found(const std::string& path, const Difference& difference, bool news);
    bool IsYoung(const Item& item) const;
    void AwaitSettled(const std::string& path, const Stamp& stamp, bool news);
    bool HasSettled(const std::string& path, Unsettled& entry, TimePoint now);

    const std::string gallery_;
    const std::chrono::milliseconds settle_;
    EventWindow& window_;
    int64_t newsFromNs_ = INT64_MAX;
    KnownTree known_;
    std::map<std::string, Unsettled> unsettled_;
    TimePoint nextLook_ = TimePoint::max();
};

}  // namespace watcher
