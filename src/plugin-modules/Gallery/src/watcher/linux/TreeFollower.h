// Follows a tree of folders: sets the watches, turns the kernel's events into entries of the ledger, and
// looks at the disk where events do not tell enough. Works in short steps, so that one thread can read the
// kernel's queue in between. One thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "plugin-modules/Gallery/src/watcher/EventWindow.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"
#include "plugin-modules/Gallery/src/watcher/linux/FolderPoll.h"
#include "plugin-modules/Gallery/src/watcher/linux/ReportLedger.h"
#include "plugin-modules/Gallery/src/watcher/linux/WatchTree.h"

namespace watcher {

class TreeFollower {
  public:
    // What is in the gallery is learnt silently; but what has changed from `newsFromNs` on, by the clock of
    // files, is told when it is learnt after that.
    TreeFollower(const std::string& root, const WatcherOptions& options, int64_t newsFromNs,
                 EventWindow& window, const std::atomic<bool>& stop);

    // Begins to watch.
    void Start() { Begin(true); }
    // Whether all of the gallery that could be had a watch has one.
    bool HasLearntGallery() const { return galleryJobs_.empty(); }

    // To wait on for events; -1 without the kernel's events.
    int Descriptor() { return tree_.inotify().Descriptor(); }
    void ReadEvents();

    // What became of an event, and what lay at its path then.
    void NoteReported(const WatchEvent& event, WatchAction action, const Item& item) {
        ledger_.NoteReported(event, action, item);
    }
    // Whether the path is one of the two folders that the user has named, which may be links.
    bool IsNamed(const std::string& folder) const { return folder == root_ || folder == gallery_; }

    // Does what is due, for some milliseconds at most where that can be helped.
    void Step();
    // When there is something to do; in the past when there is now.
    TimePoint NextDue() const;

    // The files of the gallery that are yet to be complete or settled; no value when more than `most` are, or
    // when something waits to be read, as of the last ReadEvents.
    std::optional<std::vector<std::string>> Awaited(size_t most);

    // Events were lost: to begin anew and compare what is there with what was told.
    void DistrustEvents() { eventsLost_ = true; }

  private:
    // A folder to be watched and then read.
    struct Job {
        std::string folder;
        bool silent = false;
        bool deep = true;  // with all folders in it, not only new ones
    };

    // Which folder lies at a path, if one does.
    struct Identity {
        bool exists = false;
        uint64_t volume = 0;
        uint64_t inode = 0;
        bool operator!=(const Identity& other) const {
            return exists != other.exists || volume != other.volume || inode != other.inode;
        }
    };
    static Identity IdentityOf(const Item& item);

    void Begin(bool silent);
    void Recover();
    void OpenTree();
    void Push(Job job);
    void RunJobs(TimePoint until);
    void Look(const Job& job);
    void PushFoldersIn(const Job& job, const FolderSnapshot& snapshot,
                       const std::vector<std::string>& appeared);
    void NoteLeftOut(const std::string& folder);
    void NoteIllegible(const std::string& folder);

    void Handle(const KernelEvent& event);
    void HandleFolder(const std::string& path, uint32_t mask);
    void HandleFile(const std::string& path, uint32_t mask);
    void HandleLostWatch(const KernelEvent& event, const std::string& folder);

    void AppearFolder(const std::string& path, uint32_t flag);
    void LoseFolder(const std::string& path, uint32_t flag);
    void CheckRoots();
    void LoseRoot();
    void StepPoll(TimePoint now);

    const std::string root_;
    const std::string gallery_;
    const WatcherOptions options_;
    const std::atomic<bool>& stop_;
    ReportLedger ledger_;
    WatchTree tree_;
    FolderPoll poll_;

    Identity rootSeen_;
    Identity gallerySeen_;
    bool onNetwork_ = false;
    std::deque<Job> galleryJobs_;  // ahead of the others
    std::deque<Job> otherJobs_;
    // Files of the gallery that were made and, as far as is known, not closed.
    std::set<std::string> unfinished_;
    bool readAll_ = true;                          // the last time
    std::unordered_set<std::string> queuedWhole_;  // folders of queued jobs that are deep and not silent

    TimePoint rootsDue_;
    TimePoint pollDue_;
    bool eventsLost_ = false;
    bool toldNoEvents_ = false;
    bool toldLeftOut_ = false;
    bool toldIllegible_ = false;
};

}  // namespace watcher
