// Decides what has to be reported, puts it into the window, and records it so that nothing is reported twice
// or forgotten. That record covers the gallery; outside of it there is none. Names that are not UTF-8 are
// recorded like others, but reported as a disturbance of the folder around them. One thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"
#include "plugin-modules/Gallery/src/watcher/linux/Reconcile.h"

namespace watcher {

class ReportLedger {
  public:
    ReportLedger(std::string gallery, std::chrono::milliseconds settle, EventWindow& window)
        : gallery_(std::move(gallery)), settle_(settle), window_(window) {}

    bool IsInGallery(const std::string& path) const;

    // An item that has changed since this time, by the clock of files, is reported even by a silent Compare.
    void SetNewsFrom(int64_t changedNs) { newsFromNs_ = changedNs - kFileTickNs; }
    bool IsNews(const Item& item) const { return item.changedNs >= newsFromNs_; }

    // The file was closed after writing, moved or linked there; `flag` says which.
    void FileComplete(const std::string& path, uint32_t flag);
    // There is something new with this name. A linked file is complete; a created one has yet to be written.
    void FileNamed(const std::string& path);
    // The file was written to, and may be written to again.
    void FileWritten(const std::string& path);
    // Times, owner, permissions or the number of links were changed.
    void FileTouched(const std::string& path);
    void FileGone(const std::string& path, uint32_t flag);

    // Reports the folder alone; reading it finds its content.
    void FolderAppeared(const std::string& path, uint32_t flag);
    // Reports the folder and everything in it.
    void FolderGone(const std::string& path, uint32_t flag);
    // Times may have changed, and nothing that is reported otherwise.
    void Disturbed(const std::string& path);

    // Reports how the folder differs from what was reported of it; with `silent` it only records that.
    // Returns the paths of the folders in it that are new and of those that are gone.
    struct Folders {
        std::vector<std::string> appeared;
        std::vector<std::string> gone;
    };
    Folders Compare(const std::string& folder, const FolderSnapshot& disk, bool silent);

    // Records the action taken for an event and what was at its path. If an item that disappeared is back by
    // then, the listener still knows it, so its next disappearance must be reported. If it could not be
    // looked at, the event is reported again when it can be.
    void NoteReported(const WatchEvent& event, WatchAction action, const Item& item);

    // Events of closing were lost; a comparison with the disk has to follow.
    void ForgetOpenFiles() { open_.clear(); }

    // Adds what is not in the window yet.
    void AddUnreported(UnreportedPaths& paths) const;
    // When LookAgain is due, which reports the files that have become complete.
    TimePoint NextLook() const { return nextLook_; }
    void LookAgain(TimePoint now);

  private:
    // How many times longer a known file that is written to must stay unchanged.
    static constexpr int kRewriteSettles = 10;
    // The clock of files may be late by one tick.
    static constexpr int64_t kFileTickNs = 20000000;

    // A file that is looked at again until it has not changed for a while, or an item that could not be
    // looked at and is looked at again until it can be.
    struct Unsettled {
        TimePoint seen;
        std::optional<Stamp> stamp;          // as it was seen; none where each change causes an event
        uint32_t flags = 0;                  // to report then; 0 if only a further change is to be reported
        std::chrono::milliseconds quiet{0};  // how long it must stay as it is
    };

    void Report(const std::string& path, uint32_t flags);
    bool IsOld(const Difference& difference) const;
    void Found(const std::string& path, const Difference& difference, bool news);
    bool IsYoung(const Item& item) const;
    void AwaitSettled(const std::string& path, const std::optional<Stamp>& stamp, uint32_t flags);
    bool HasSettled(const std::string& path, Unsettled& entry, TimePoint now);

    const std::string gallery_;
    const std::chrono::milliseconds settle_;
    EventWindow& window_;
    int64_t newsFromNs_ = INT64_MAX;
    KnownTree known_;
    std::map<std::string, Unsettled> unsettled_;
    std::set<std::string> open_;  // files that were created and, as far as is known, not closed since
    TimePoint nextLook_ = TimePoint::max();
};

}  // namespace watcher
