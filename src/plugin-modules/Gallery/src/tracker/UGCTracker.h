// The captures of the gallery, kept in memory (GalleryRecord) and mirrored in a file (TrackerJournal). The
// record is compared with the disk at the start, a watcher keeps it up to date afterwards, and each list is
// checked when it is requested. A path in a call may be any path to the capture; see GalleryPlace.
//
// Threads: the "UGC_" worker tracks what the watcher and the capture service report; when the product itself
// changes a file, the thread that does so tracks it. Any thread may query. The host is notified of a change
// before the function that made it returns or, if another thread is notifying at that moment, by that thread;
// always in the order of the changes. Files that are tracked in a row share a write, which costs as much as
// the gallery is large: each is on record at once, and the host is notified when it is in the file.
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
#include "plugin-modules/Gallery/src/tracker/Backlog.h"
#include "plugin-modules/Gallery/src/tracker/CapacityWatch.h"
#include "plugin-modules/Gallery/src/tracker/GalleryPlace.h"
#include "plugin-modules/Gallery/src/tracker/GalleryRecord.h"
#include "plugin-modules/Gallery/src/tracker/HostLink.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/IgnoreList.h"
#include "plugin-modules/Gallery/src/tracker/RebuildPlan.h"
#include "plugin-modules/Gallery/src/tracker/TrackerParts.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerJournal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

class UGCTracker : private IJournalSource {
  public:
    using TrackedUGC = ::TrackedUGC;
    using TrackedUGCGame = ::TrackedUGCGame;
    using Parts = TrackerParts;
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
    // The same, but a rebuild that is nearly done comes to its end. Not for a change of the gallery that is
    // taken back: the file of its rebuild would take the old one's place.
    void Finish() {
        finishing_ = true;
        Stop();
    }
    // The tracker is left to itself because something is stuck: what is not written is written when that goes
    // on, if the file is still as it was left and nobody else writes it. The host is notified of nothing any
    // more. Does not wait.
    void Abandon() {
        host_.Cut();
        journal_.Abandon();
    }
    bool HasStopped() const { return stopped_; }
    // Of its worker.
    const std::atomic<uint64_t>& progress() const { return queue_.progress(); }
    // Once abandoned, see TrackerJournal.
    bool MayWrite() { return journal_.MayWrite(); }
    // Deletes the tracker's file; the next write makes it anew.
    void DeleteTrackerFile() { journal_.DeleteTrackerFile(); }
    // Ends in "/", and never changes.
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
    // The file `stamp` at `place` will have what people gave the capture at `path`, even after a kill.
    void KeepFor(const std::string& path, const std::string& place, const FileStamp& stamp);
    // Waits until the file is on record. Returns false at `until`, after Stop, when `cancelled` is set and
    // WakeWaiting called after that, and at once for a path that can never be on record.
    bool AwaitTracked(const std::string& path, std::chrono::steady_clock::time_point until,
                      const std::atomic<bool>& cancelled) const;
    void WakeWaiting() { record_.Wake(); }

    bool IsTrackedFile(const std::string& path) const { return FindRecord(path) != nullptr; }
    bool CheckIfIgnored(const std::string& path) const { return ignoreList_.Has(path); }
    IgnoreList& ignoreList() { return ignoreList_; }

    // 0x80070002 for a path that is not on record.
    KXP::RetVal GetUGCData(const std::string& path, TrackedUGC& out) const;
    std::vector<std::string> GetTrackedGames() const { return record_.Games(); }
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

    // The capture service has saved a file: the host is notified now, or when the file gets on record.
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
    using RecordPtr = GalleryRecord::RecordPtr;
    using Rebuilding = GalleryRecord::Rebuilding;
    using Sum = TrackerJournal::Sum;
    static const char kRunTag;

    News& news() { return record_.news(); }
    KeptCaptures& kept() { return record_.kept(); }
    // Start, rebuild and stop.
    void StartWatcher(const GalleryWalk& walk = {}) EXCLUDES(watcherMutex_);
    std::shared_ptr<IFileWatcher> Watcher() const EXCLUDES(watcherMutex_);
    void ParseTracker(bool watch);
    bool WatchAndMeasure(bool watch, uint32_t& sum, media::SeenFiles& seen);
    void CompareRecent(const media::SeenFiles& seen);
    void Load(RebuildPlan::Former former, TrackedUGCGames games, int32_t lastId);
    void Rebuild(const char* reason, RebuildPlan::Former former, std::optional<FoundFiles> found = {});
    void TrackAll(FoundFiles found, RebuildPlan::Former former, KXP::TimePoint when);
    void TrackSome(RebuildPlan& plan);
    void FinishRebuild();
    void EnterKnown();
    void EnterChange(const std::string& path);

    // Beside another process, on the worker.
    void Follow();
    void TakeKept(const KeptCapture& kept);
    void TakeOverRecord();
    void FindMissed();
    void WatchAtLast();
    void ReadRecord();

    // Tracking, on the worker.
    void EnqueueWork(const void* tag, KXP::TimePoint when, std::function<void()> work);
    // What throws may have missed something at the path, which is then looked at again. Takes no memory.
    void RunOrLookAgain(const std::string& path, const std::function<void()>& work) noexcept;
    void EnqueueFinish();
    void TrackFilesIn(const std::string& folder);
    void UntrackPath(const std::string& path, uint64_t before);
    void LookAgain(const std::string& path);
    void FinishEntry();

    // Any thread.
    RecordPtr FindRecord(const std::string& path) const;
    void TrackMoved(const TrackedUGC& record, const std::string& place);
    void TrackOrLog(const std::string& path, const TrackedUGC* former = nullptr);
    KXP::RetVal TrackFileTask(const std::string& path, const TrackedUGC* former);
    void NoteFailedLook(const std::string& path);
    void DropGoneIn(const std::string& folder);
    void DropGone(std::vector<std::string> paths);
    std::vector<RecordPtr> Sanitize(std::vector<RecordPtr> records);
    void SanitizePaths(const std::vector<std::string>& gone);
    void CancelLater(const Highlight& highlight);

    // Writing, on any thread.
    KXP::RetVal Write(Sum sum);
    KXP::RetVal SaveKept();
    void PaySum();
    bool HasUnwritten() override { return record_.news().HasUnwritten(); }
    Known AskKnown() override;
    bool IsSettled(const std::string& path) const;
    bool IsFolderSettled(const std::string& folder) const;
    TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) override {
        return record_.TakeContent(writer);
    }
    void NoteWritten(const KXP::RetVal& written) override { record_.news().ReleaseCovered(written); }
    void QueueRelease() override;

    mutable HostLink host_;  // like a reference, for questions
    const WatcherOptions watcherOptions_;
    // Each has its own synchronisation.
    GalleryPlace place_;
    IgnoreList ignoreList_;
    Backlog backlog_;
    GalleryRecord record_;
    TrackerJournal journal_;
    std::atomic<bool> finishing_{false};
    std::atomic<bool> stopping_{false};
    std::atomic<bool> stopped_{false};
    // Null beside a process that watches, and as long as none can be started.
    mutable KXP::Mutex watcherMutex_;
    std::shared_ptr<IFileWatcher> watcher_ GUARDED_BY(watcherMutex_);
    KXP::TimePoint nextStart_{};  // of a watcher that could not be started; the worker's
    bool followed_ = false;       // the file of another process was read; the worker's
    // Its entries use all of the above. Stop ends it before the watcher, whose reports it drops then.
    KXP::TaskQueue queue_;
    CapacityWatch capacity_;
};
