// Decides what is an event, puts it into the window, and keeps account of it so that nothing is told twice or
// forgotten. Inside the gallery that account is complete; elsewhere there is none. One thread.
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

    // What has changed since then, by the clock of files, is told also when it is found silently.
    void SetNewsFrom(int64_t changedNs) { newsFromNs_ = changedNs; }
    bool IsNews(const Item& item) const { return item.changedNs >= newsFromNs_; }

    // The file at the path was closed after writing, or moved or linked there, by the flag given.
    void FileComplete(const std::string& path, uint32_t flag);
    // A name for a file is new: a linked file is complete, one that was made is yet to be written.
    void FileNamed(const std::string& path);
    void FileGone(const std::string& path, uint32_t flag);

    // The folder alone; its content is found by looking at it.
    void FolderAppeared(const std::string& path, uint32_t flag);
    // With everything in it.
    void FolderGone(const std::string& path, uint32_t flag);

    // Tells how the folder differs from what was told of it, or only notes that with `silent`. Gives the
    // folders in it that are new and those that are gone, by path.
    struct Folders {
        std::vector<std::string> appeared;
        std::vector<std::string> gone;
    };
    Folders Compare(const std::string& folder, const FolderSnapshot& disk, bool silent);

    // What became of an event, and what lay at its path then. A file that went may have come back by then:
    // the listener still knows it, so it must be reported when it goes again.
    void NoteReported(const WatchEvent& event, WatchAction action, const Item& item);

    std::vector<std::string> UnsettledPaths() const {
        std::vector<std::string> paths;
        for (const auto& [path, entry] : unsettled_)
            paths.push_back(path);
        return paths;
    }
    // Looks again at files that may not have been complete, once that is due.
    TimePoint NextLook() const { return nextLook_; }
    void LookAgain(TimePoint now);

  private:
    struct Unsettled {
        Stamp stamp;
        TimePoint seen;
        bool news = true;  // to be told even if it stays as it was
    };

    void Tell(const std::string& path, uint32_t flags);
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
