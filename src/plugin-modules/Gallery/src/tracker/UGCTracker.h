// The captures of the gallery, kept in memory and mirrored in a file. The record is compared with the disk at
// the start, a watcher keeps it up to date afterwards, and each list is checked when it is requested.
//
// Threads: the "UGC_" worker tracks what the watcher and the capture service report; when the product itself
// changes a file, the thread that does so tracks it. Any thread may query. The host is notified of a change
// before the function that made it returns or, if another thread is notifying at that moment, by that thread;
// always in the order of the changes.
//
// A write costs as much as the gallery is large, so files that are tracked in a row share one: each is on
// record at once, and the host is notified when it is in the file (see journal/TrackerJournal.h). What people
// gave outlasts the record (see kept/KeptCaptures.h).
//
// A path in a call may be any path to the capture; see GalleryPlace.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/results/RetVal.h"
#include "common/task/TaskQueue.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/tracker/Backlog.h"
#include "plugin-modules/Gallery/src/tracker/CapacityWatch.h"
#include "plugin-modules/Gallery/src/tracker/GalleryPlace.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/IgnoreList.h"
#include "plugin-modules/Gallery/src/tracker/News.h"
#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerJournal.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptCaptures.h"
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
        bool startWorker = true;  // without it the test calls queue().Step()
        bool watch = true;
        WatcherOptions watcher;  // except its gallery, which is always the host's
        // If summing up the gallery's tree takes longer, the host is notified of captures before it.
        std::chrono::milliseconds sumInPassing{5};
    };

    // If no other process does, it writes the file: it starts with its content or, if that does not match the
    // disk, with a rebuild that continues after the constructor has returned. With `useUniqueFile` it always
    // rebuilds, into a file of its own that replaces the tracker's file at the end. Otherwise it follows the
    // file until that process ends. `host` outlives it. Throws KXP::Exception when the share folder cannot be
    // created, and std::runtime_error when no unique name is left.
    UGCTracker(ITrackerHost* host, bool useUniqueFile) : UGCTracker(host, useUniqueFile, Parts{}) {}
    UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts);
    // Stops. On any thread but the tracker's worker and the watcher's.
    ~UGCTracker() override;
    UGCTracker(const UGCTracker&) = delete;
    UGCTracker& operator=(const UGCTracker&) = delete;

    // Puts on record what is known by now, for at most half a second, ends the worker and the watcher, and
    // writes what is not written yet. Nothing touches the file afterwards, and queries are still answered.
    void Stop();
    // Deletes the tracker's file; the next write makes it anew.
    void DeleteTrackerFile() { journal_.DeleteTrackerFile(); }
    // Ends in "/". It never changes; another gallery gets another tracker.
    const std::string& gallery() const { return place_.path(); }
    // The path under which the file is on record, or would be; of another file the path itself.
    std::string PlaceOf(const std::string& path) const { return place_.CapturePathOf(path).value_or(path); }

    // Scans the whole gallery and queues its files for `when`, which only adds and renews records. `former`
    // is what they were.
    void UpdateTracker(RebuildPlan::Former former, KXP::TimePoint when);
    // Each queues the work for one path. TrackFolder tracks the files in a game's folder; for the gallery, or
    // its parent, the whole gallery. The second is for a path as gallery() has it.
    void TrackFile(const std::string& path);
    void TrackWatchedFile(const std::string& path);
    void TrackFolder(const std::string& path);
    void UntrackFile(const std::string& path);
    // Something has changed at the path that may count in the gallery's sum.
    void NoteDisturbed(const std::string& path);

    // For what the product itself has just done to a file: the record is there, or gone, when the call
    // returns; the worker writes the file later. A path that can never be on record has no effect.
    void TrackNow(const std::string& path);
    void UntrackNow(const std::string& path);
    // The file was moved; between games its record keeps its id.
    void MoveNow(const std::string& from, const std::string& to);
    // What people gave the capture at `path` will be that of the file `stamp` at `place`, even if the process
    // ends before that file is on record.
    void KeepFor(const std::string& path, const std::string& place, const FileStamp& stamp);
    // Waits until the file at the path is on record. Returns false at `until`, after Stop, when `cancelled`
    // is set and WakeWaiting called after that, and at once for a path that can never be on record.
    bool AwaitTracked(const std::string& path, std::chrono::steady_clock::time_point until,
                      const std::atomic<bool>& cancelled) const;
    void WakeWaiting();

    bool IsTrackedFile(const std::string& path) const { return FindRecord(path) != nullptr; }
    bool CheckIfIgnored(const std::string& path) const { return ignoreList_.Has(path); }
    IgnoreList& ignoreList() { return ignoreList_; }

    // 0x80070002 for a path that is not on record.
    KXP::RetVal GetUGCData(const std::string& path, TrackedUGC& out) const;
    std::vector<std::string> GetTrackedGames() const;
    // The game's captures whose files exist, oldest first. Removes the records of the others.
    std::vector<TrackedUGC> GetSanatizedGameUGC(const std::string& game);
    // The same together with the game's highlights in flight, newest first.
    std::vector<TrackedUGC> GetGameUGC(const std::string& game);
    // Of all games, newest first.
    std::vector<TrackedUGC> GetRecentUGC(unsigned count);
    void GetAppStats(const std::string& game, unsigned& videos, unsigned& images);
    unsigned GetCurrentSizeMB() const;
    // Deletes the file, and its folder if that is then empty. The watcher's report removes the record.
    KXP::RetVal DeleteUGC(const TrackedUGC& record);
    // Sets the texts over a capture, both empty for none. 0x80070002 for a path that is not on record,
    // 0x80004005 with the reason when they cannot be kept; the old texts then stay.
    KXP::RetVal AddMeme(const std::string& path, const std::string& topBarText,
                        const std::string& bottomBarText);

    // For a file that the capture service reports as saved: the host is notified now if the file is on
    // record, and otherwise when it gets on record.
    void Announce(const std::string& path, const Announcement& announcement);

    // Highlights. EnqueuePendingHighlight sets the id of `highlight`, which its capture will have. A
    // highlight whose file has not come a minute after its end is cancelled.
    void EnqueuePendingHighlight(Highlight& highlight);
    bool DequeuePendingHighlight(const Highlight& highlight);
    // 0x80070002 when there is none, in flight or tracked.
    KXP::RetVal GetHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const;
    // A mask of 0 matches all.
    KXP::RetVal GetFilteredHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                      const std::string& group, int tagMask, int significanceMask) const;
    KXP::RetVal DeleteTrackedHighlights(const std::vector<TrackedUGC>& records);
    KXP::RetVal DeleteTrackedHighlightGroup(const std::string& group, const std::string& game);
    KXP::TaskQueue& queue() { return queue_; }  // for tests that run the worker's entries themselves

  private:
    using RecordPtr = RecordStore::RecordPtr;
    using Sum = TrackerJournal::Sum;
    static const char kRunTag;

    // Whether a rebuild is in progress, and which kind. The state in the settings serves only the next start.
    enum class Rebuilding {
        No,
        Silently,   // at a start, or after the gallery's folder has come back; pages are not notified
        InOneFile,  // after a change of the gallery; pages are notified of its progress
    };

    // Start and rebuild.
    void StartWatcher();
    void ParseTracker() EXCLUDES(mutex_);
    void Load(RebuildPlan::Former former, TrackedUGCGames games, int32_t lastId) EXCLUDES(mutex_);
    void Rebuild(const char* reason, RebuildPlan::Former former, std::optional<FoundFiles> found = {});
    void TrackAll(FoundFiles found, RebuildPlan::Former former, KXP::TimePoint when);
    void TrackSome(RebuildPlan& plan);
    void TrackStep(RebuildPlan::Step step);
    void FinishRebuild() EXCLUDES(mutex_);
    void SortOutKept();
    void EnterKnown();
    void EnterChanges(const std::vector<std::string>& paths, std::chrono::steady_clock::time_point until);
    void EnterChange(const std::string& path) EXCLUDES(mutex_);

    // Beside another process, on the worker.
    void FollowLater();
    void Follow();
    void TakeKept(const KeptCapture& kept);
    void TakeOverRecord();
    void FindMissed();
    void ReadRecord();
    void CompleteFollowed(TrackedUGC& record);
    void TakeRecord(std::vector<TrackedUGC> records, int32_t lastId) EXCLUDES(mutex_);

    // Tracking, on the worker.
    void EnqueueWork(const void* tag, KXP::TimePoint when, std::function<void()> work);
    void EnqueueFinish();
    void EnqueueTrack(const std::string& path);
    void TrackFilesIn(const std::string& folder);
    void UntrackPath(const std::string& path, uint64_t before) EXCLUDES(mutex_);
    void NoteFailedLook(const std::string& path);
    void LookAgain(const std::string& path);
    bool MayWaitForNext();
    void FinishEntry();

    // Any thread.
    RecordPtr RecordAt(const std::string& path) const EXCLUDES(mutex_);
    RecordPtr FindRecord(const std::string& path) const EXCLUDES(mutex_);
    std::vector<std::string> PathsIn(const std::string& folder) const EXCLUDES(mutex_);
    void TrackMoved(const TrackedUGC& record, const std::string& place);
    void TrackOrLog(const std::string& path, const TrackedUGC* former = nullptr);
    KXP::RetVal TrackFileTask(const std::string& path, const TrackedUGC* former) EXCLUDES(mutex_);
    void TrackUGC(TrackedUGC record, const KeptFacts& hint) EXCLUDES(mutex_);
    void RenewUGC(TrackedUGC record) EXCLUDES(mutex_);
    KeptFacts TakeHighlight(TrackedUGC& record, bool told) REQUIRES(mutex_);
    bool IsFreeId(int32_t id) const REQUIRES(mutex_);
    int32_t NewId() REQUIRES(mutex_);
    int32_t LastId() const EXCLUDES(mutex_);
    KeptFacts FactsOfRecord(const TrackedUGC& record) const;
    void Keep(const TrackedUGC& record, const KeptFacts& facts);
    size_t ShowKept(const std::string& path) EXCLUDES(mutex_);
    void Drop(const std::vector<std::string>& paths) EXCLUDES(mutex_);
    void DropGoneIn(const std::string& folder);
    size_t Untrack(const std::vector<std::string>& paths, uint64_t before) EXCLUDES(mutex_);
    void AddTrackedNews(const RecordPtr& entered) REQUIRES(mutex_);
    void AddRemovedNews(const RecordPtr& record) REQUIRES(mutex_);
    void AddUsageNews() REQUIRES(mutex_);
    void SanitizeUGC(std::vector<TrackedUGC>& list);
    void SanitizePaths(const std::vector<std::string>& gone) EXCLUDES(mutex_);
    void UpdateHighlightInfo(const TrackedUGC& found, const Highlight& highlight) REQUIRES(mutex_);
    void CancelLater(const Highlight& highlight);
    void NotifyAnnounced(const std::string& path, const Announcement& announcement);
    void RemoveFromGroups(const std::vector<TrackedUGC>& records) EXCLUDES(mutex_);

    // Writing, on any thread.
    KXP::RetVal Write(Sum sum);
    void Flush();
    void PaySum();
    bool HasUnwritten() override { return news_.HasUnwritten(); }
    bool KnowsAll() override;
    bool IsSettled(const std::string& path) const EXCLUDES(mutex_);
    bool IsFolderSettled(const std::string& folder) const;
    TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) override EXCLUDES(mutex_);
    void NoteWritten(const KXP::RetVal& written) override { news_.ReleaseCovered(written); }
    void QueueRelease() override;

    ITrackerHost& host_;

    // Each has its own synchronisation.
    GalleryPlace place_;
    IgnoreList ignoreList_;
    Backlog backlog_;
    News news_;
    KeptCaptures kept_;
    TrackerJournal journal_;
    std::atomic<Rebuilding> rebuilding_;
    std::atomic<bool> stopping_{false};

    // Comes before the mutexes of Announcements, PendingHighlights, Backlog, KeptCaptures and News.
    mutable KXP::OuterMutex mutex_;
    mutable KXP::CondVar entered_;  // a record was added, or a wait has to end
    RecordStore records_ GUARDED_BY(mutex_);

    WatcherOptions watcherOptions_;
    // Set before the worker starts, or by it while it does not own the file, and by Stop; otherwise the
    // thread that has the journal's turn uses it.
    std::unique_ptr<IFileWatcher> watcher_;
    bool followed_ = false;  // the file of another process was read; used like watcher_
    // Its entries use all of the above. Stop ends it before the watcher, whose reports it drops then.
    KXP::TaskQueue queue_;
    CapacityWatch capacity_;
};
