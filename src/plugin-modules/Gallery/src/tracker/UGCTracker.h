// The captures of the gallery, kept in memory and mirrored in a file, and kept true to the disk: compared
// with it at the start, followed by a watcher afterwards, and checked whenever a list is asked for.
//
// Threads: the "UGC_" worker tracks what the watcher and the capture service report; what the product itself
// does to a file is tracked by the thread that does it. Any thread may ask. The host is notified of a change
// when the function that made it returns or, when another thread is notifying at that moment, by that thread,
// and always in the order of the changes.
//
// A write costs as much as the gallery is large, so files that are tracked one after the other share one:
// each is on record at once, and the host is notified when it is in the file (see journal/TrackerJournal.h).
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/Mutex.h"
#include "common/RetVal.h"
#include "common/plugincommon/task/TaskQueue.h"
#include "plugin-modules/Gallery/src/tracker/Backlog.h"
#include "plugin-modules/Gallery/src/tracker/CapacityWatch.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/IgnoreList.h"
#include "plugin-modules/Gallery/src/tracker/News.h"
#include "plugin-modules/Gallery/src/tracker/PendingHighlights.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerJournal.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

class UGCTracker : private IJournalSource {
  public:
    using TrackedUGC = ::TrackedUGC;
    using TrackedUGCGame = ::TrackedUGCGame;

    // What a test replaces.
    struct Parts {
        KXP::Clock& clock = KXP::Clock::Steady();
        bool startWorker = true;  // else the test steps queue()
        bool watch = true;
        WatcherOptions watcher;  // but for its gallery
        // The host is notified of captures before a sum of the gallery's tree that takes longer.
        std::chrono::milliseconds sumInPassing{5};
    };

    // Starts with what the file holds or, when that is not true to the disk, with a rebuild that goes on
    // after the constructor. With `useUniqueFile` it always rebuilds, into a file of its own that replaces
    // the tracker's at the end. `host` outlives it. Throws KXP::Exception when the share folder cannot be
    // made, and std::runtime_error when no unique name is left.
    UGCTracker(ITrackerHost* host, bool useUniqueFile) : UGCTracker(host, useUniqueFile, Parts{}) {}
    UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts);
    // Stops; on any thread but its own worker and watcher.
    ~UGCTracker() override;
    UGCTracker(const UGCTracker&) = delete;
    UGCTracker& operator=(const UGCTracker&) = delete;

    // Ends worker and watcher and writes what is not written. Nothing touches the file afterwards; what is on
    // record can still be asked for.
    void Stop();
    void DeleteTrackerFile() { journal_.DeleteTrackerFile(); }  // the next write makes it anew
    // Ends in "/". A tracker belongs to one gallery; another folder gets a tracker of its own.
    const std::string& gallery() const { return gallery_; }

    // Queues a look at the whole gallery, which only adds.
    void UpdateTracker();
    // Queue the work for one path; for a folder, what lies in it, and the whole gallery for that itself.
    // TrackWatchedFile is for a path that is known to be no folder.
    void TrackFile(const std::string& path);
    void TrackWatchedFile(const std::string& path);
    void TrackFolder(const std::string& path);
    void UntrackFile(const std::string& path);

    // What the product itself has just done to a file: on record, or off it, when the call returns, and
    // written by the worker later. A path that can never be on record changes nothing.
    void TrackNow(const std::string& path);
    void UntrackNow(const std::string& path);
    // Waits until the file at the path is on record. False at `until`, after Stop, when `cancelled` is set
    // and WakeWaiting called after that, and at once for a path that can never be on record.
    bool AwaitTracked(const std::string& path, std::chrono::steady_clock::time_point until,
                      const std::atomic<bool>& cancelled) const;
    void WakeWaiting();

    bool IsTrackedFile(const std::string& path) const;
    bool CheckIfIgnored(const std::string& path) const { return ignoreList_.Has(path); }
    IgnoreList& ignoreList() { return ignoreList_; }

    // 0x80070002 for a path that is not on record.
    KXP::RetVal GetUGCData(const std::string& path, TrackedUGC& out) const;
    std::vector<std::string> GetTrackedGames() const;
    // The game's captures whose files are there, oldest first. The others go off the record.
    std::vector<TrackedUGC> GetSanatizedGameUGC(const std::string& game);
    // The same and its highlights in flight, newest first.
    std::vector<TrackedUGC> GetGameUGC(const std::string& game);
    // Of all games, newest first.
    std::vector<TrackedUGC> GetRecentUGC(unsigned count);
    void GetAppStats(const std::string& game, unsigned& videos, unsigned& images);
    unsigned GetCurrentSizeMB() const;
    // Deletes the file, and its folder when that is then empty. The watcher takes it off the record.
    KXP::RetVal DeleteUGC(const TrackedUGC& record);
    // The texts laid over a capture, both empty for none. 0x80070002 for a path that is not on record.
    KXP::RetVal AddMeme(const std::string& path, const std::string& topBarText,
                        const std::string& bottomBarText);

    // What the capture service says of a file that it has saved: the host is notified of it now when the file
    // is on record, and when it has come on record otherwise.
    void Announce(const std::string& path, const Announcement& announcement);

    // Highlights. The first gives `highlight` the id that its capture will have; unless its file comes within
    // a minute of its end, it is cancelled.
    void EnqueuePendingHighlight(Highlight& highlight);
    bool DequeuePendingHighlight(const Highlight& highlight) { return pendingHighlights_.Dequeue(highlight); }
    // 0x80070002 when there is none, in flight or tracked.
    KXP::RetVal GetHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const;
    // A mask of 0 lets all pass.
    KXP::RetVal GetFilteredHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                      const std::string& group, int tagMask, int significanceMask) const;
    KXP::RetVal DeleteTrackedHighlights(const std::vector<TrackedUGC>& records);
    KXP::RetVal DeleteTrackedHighlightGroup(const std::string& group, const std::string& game);

    KXP::TaskQueue& queue() { return queue_; }  // for tests that run the worker's entries themselves

  private:
    using RecordPtr = RecordStore::RecordPtr;
    using Sum = TrackerJournal::Sum;

    // The one truth about a rebuild, whose mark in the settings is for the next start alone.
    enum class Rebuilding {
        No,
        Silently,   // at a start, or when the gallery itself has come back
        InOneFile,  // after a change of the gallery; pages see each file count
    };

    // Start and rebuild.
    void StartWatcher(WatcherOptions options);
    void ParseTracker() EXCLUDES(mutex_);
    bool LoadRecords(const KXP::Value& document, int32_t lastId) EXCLUDES(mutex_);
    void Rebuild(const char* reason) EXCLUDES(mutex_);
    void FinishRebuild() EXCLUDES(mutex_);

    // Tracking, on the worker.
    void EnqueueWork(const void* tag, std::function<void()> work);
    void EnqueueTrack(const std::string& path);
    void UntrackPath(const std::string& path, uint64_t before) EXCLUDES(mutex_);
    bool MayWaitForNext();
    void EndStep();

    // Any thread.
    void TrackOrLog(const std::string& path);
    KXP::RetVal TrackFileTask(const std::string& path) EXCLUDES(mutex_);
    void EnterRecord(TrackedUGC record) EXCLUDES(mutex_);
    void TakeHighlight(const Highlight& highlight, TrackedUGC& record);
    size_t Untrack(const std::vector<std::string>& paths, uint64_t before) EXCLUDES(mutex_);
    std::vector<std::string> PathsUnder(const std::string& folder) const EXCLUDES(mutex_);
    void AddRemovedNews(const RecordPtr& record);
    void AddUntrackedNews() EXCLUDES(mutex_);
    void SanitizeUGC(std::vector<TrackedUGC>& list);
    void SanitizePaths(const std::vector<std::string>& gone) EXCLUDES(mutex_);
    int32_t UpdateHighlightInfo(const RecordPtr& found, const Highlight& highlight) REQUIRES(mutex_);
    void NotifyAnnounced(const std::string& path, const Announcement& announcement);
    void RemoveFromGroups(const std::vector<TrackedUGC>& records) EXCLUDES(mutex_);

    // Writing, on any thread.
    void Flush();
    void PaySum();
    bool HasUnwritten() override { return news_.HasUnwritten(); }
    bool KnowsAll() override;
    bool IsSettled(const std::string& path) const EXCLUDES(mutex_);
    TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) override EXCLUDES(mutex_);
    void NoteWritten(const KXP::RetVal& written) override { news_.ReleaseCovered(written); }
    void QueueRelease() override;

    ITrackerHost& host_;
    const std::string gallery_;

    // With synchronisation of their own.
    Announcements& announcements_;
    IgnoreList ignoreList_;
    PendingHighlights pendingHighlights_;
    Backlog backlog_;
    News news_;
    TrackerJournal journal_;
    std::atomic<Rebuilding> rebuilding_;
    std::atomic<bool> stopping_{false};

    mutable KXP::Mutex mutex_;
    mutable KXP::CondVar entered_;  // a record, or the end of a wait
    RecordStore records_ GUARDED_BY(mutex_);

    // The constructor's and Stop's; in between whoever has the journal's turn.
    std::unique_ptr<IFileWatcher> watcher_;
    // Entries of the queue use all of the above. Stop ends it before the watcher, whose events it drops then.
    KXP::TaskQueue queue_;
    CapacityWatch capacity_;
};
