// Follows the gallery with everything below it, and the folders around it for their own entries: sets
// watches, turns the kernel's events into entries of the ledger, and reads the disk where events are not
// enough. Works in short slices, so that its thread can read the kernel's queue in between. One thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderJobs.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderPoll.h"
#include "plugin-modules/Gallery/src/watcher/linux/ReportLedger.h"
#include "plugin-modules/Gallery/src/watcher/linux/WatchTree.h"

namespace watcher {

class TreeFollower {
  public:
    // The existing content of the gallery is learnt without a report, except for items that have changed
    // since `newsFromNs` by the clock of files.
    TreeFollower(const std::string& root, const WatcherOptions& options, int64_t newsFromNs,
                 EventWindow& window, const std::atomic<bool>& stop);

    // Starts watching.
    void Start();
    // Right after Start: lets the walk read the gallery. What it does not show is read later.
    void Learn(const GalleryWalk& walk);
    // Whether every folder of the gallery that can be watched is watched.
    bool HasLearntGallery() const { return jobs_.IsEmpty(); }

    // Readable when there are events; -1 without the kernel's events.
    int Descriptor() { return tree_.inotify().Descriptor(); }
    void ReadEvents();

    // See ReportLedger.
    void NoteReported(const WatchEvent& event, WatchAction action, const Item& item) {
        ledger_.NoteReported(event, action, item);
    }
    // Whether the path is that of the watched folder or the gallery, which users name and which may be links.
    bool IsNamed(const std::string& folder) const { return folder == root_.path || folder == gallery_.path; }

    // Does what is due, for about 10 milliseconds; a single slow folder may take longer.
    void DoDueWork();
    // When there is something to do next; a time in the past means now.
    TimePoint NextDue() const;

    // Looks at once at the folders without events.
    void PollNow();
    // Whether the ledger holds everything that happened before the last ReadEvents and PollNow.
    bool HasCaughtUp() const;
    // Adds what is in no window yet.
    void AddUnreported(UnreportedPaths& paths) const;

    // Events were lost: start again and compare the disk with what was reported.
    void DistrustEvents() {
        // Silent ones would hide what has come since the gallery was said to be watched.
        jobs_.Clear();
        eventsLost_ = true;
    }

  private:
    class Learner;
    // Which folder is at a path, if any.
    struct Identity {
        bool exists = false;
        uint64_t volume = 0;
        uint64_t inode = 0;
        bool operator!=(const Identity& other) const {
            return exists != other.exists || volume != other.volume || inode != other.inode;
        }
    };
    // A folder that users name, and which one was there when it was last looked at.
    struct NamedFolder {
        const std::string path;
        Identity seen;

        // No value when it cannot be looked at.
        std::optional<Identity> Look() const;
    };
    // Lines that are logged once.
    struct Logged {
        bool noEvents = false;
        bool leftOut = false;
        bool illegible = false;
    };

    void Begin(bool silent);
    void Recover();
    void OpenTree();
    void RunJobs(TimePoint until);
    void Look(const FolderJob& job);
    Watched WatchFolder(const std::string& folder);
    void TakeIn(const FolderJob& job, Watched watched, const FolderSnapshot& snapshot);
    void NoteUnread(const std::string& folder);
    void PushFoldersIn(const FolderJob& job, const FolderSnapshot& snapshot,
                       const std::vector<std::string>& appeared);
    void NoteLeftOut(const std::string& folder);
    void NoteIllegible(const std::string& folder);

    void Handle(const KernelEvent& event);
    void HandleAround(const KernelEvent& event);
    void HandleFolder(const std::string& path, uint32_t mask);
    void HandleFile(const std::string& path, uint32_t mask);
    void HandleSelf(const KernelEvent& event, const std::string& folder);
    void HandleTouchedFolder(const std::string& path);
    void HandleLostWatch(const std::string& folder);

    void AppearFolder(const std::string& path, uint32_t flag);
    void LoseFolder(const std::string& path, uint32_t flag);
    void CheckRoots();
    void Replace(NamedFolder& folder, const Identity& now);
    void WatchParents();
    void WatchParent(const std::string& folder);
    bool IsParent(const std::string& folder) const;
    void PollFolders(TimePoint now);

    NamedFolder root_;
    NamedFolder gallery_;
    // The folder that holds the gallery, watched when it is not the watched folder: the gallery may be a
    // link.
    const std::string around_;
    const WatcherOptions options_;
    const std::atomic<bool>& stop_;
    ReportLedger ledger_;
    WatchTree tree_;
    FolderPoll poll_;

    bool onNetwork_ = false;
    FolderJobs jobs_;
    bool readAll_ = true;  // by the last ReadEvents

    TimePoint rootsDue_;
    TimePoint pollDue_;
    bool eventsLost_ = false;
    Logged logged_;
};

}  // namespace watcher
