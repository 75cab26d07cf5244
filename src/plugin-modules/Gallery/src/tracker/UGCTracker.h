// The captures of the gallery, in memory and mirrored in a file, and true to the disk: compared with it at
// the start, kept by a watcher while it runs, and checked whenever a list is asked for.
//
// Threads: the "UGC_" worker does all the tracking; the watcher's thread enqueues; any thread may ask. What a
// function changes is told to the host when it returns or, when another thread is telling just then, by that
// thread, and always in the order of the changes.
//
// The file and the sum of the gallery's tree that stands in it cost as much as the gallery is large. So files
// that are tracked one behind the other share one write: each is on record at once, and is told when it is
// written. Of the file only what is new is written when captures alone have come. In a large gallery the sum
// is made behind that, when nothing else is to be tracked. Until then, and as long as more is known to come,
// the file holds a sum that fits no tree, so that a start after a crash rebuilds.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "common/JSONFile.h"
#include "common/Mutex.h"
#include "common/RetVal.h"
#include "common/plugincommon/task/TaskQueue.h"
#include "plugin-modules/Gallery/src/tracker/CapWatch.h"
#include "plugin-modules/Gallery/src/tracker/FileWatcher.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/IgnoreList.h"
#include "plugin-modules/Gallery/src/tracker/Outbox.h"
#include "plugin-modules/Gallery/src/tracker/PendingHighlights.h"
#include "plugin-modules/Gallery/src/tracker/RecordStore.h"
#include "plugin-modules/Gallery/src/tracker/TrackedUGC.h"
#include "plugin-modules/Gallery/src/tracker/TrackerFileWriter.h"

class UGCTracker {
  public:
    using TrackedUGC = ::TrackedUGC;
    using TrackedUGCGame = ::TrackedUGCGame;

    // What a test replaces.
    struct Parts {
        KXP::Clock& clock = KXP::Clock::Steady();
        bool startWorker = true;  // else the test steps queue()
        bool watch = true;
        WatcherOptions watcher;  // but for its gallery
        // Captures are told ahead of a sum of the gallery's tree that takes longer.
        std::chrono::milliseconds sumInPassing{5};
    };

    // Comes up with what the file holds or, when that is not true to the disk, with a rebuild that goes on
    // behind it. With `useUniqueFile` it always rebuilds, into a file of its own that takes the place of the
    // tracker's at the end. `host` outlives it. Throws KXP::Exception when the share folder cannot be made,
    // and std::runtime_error when no unique name is left.
    UGCTracker(ITrackerHost* host, bool useUniqueFile) : UGCTracker(host, useUniqueFile, Parts{}) {}
    UGCTracker(ITrackerHost* host, bool useUniqueFile, const Parts& parts);
    // Stops; on any thread but its own worker and watcher.
    ~UGCTracker();
    UGCTracker(const UGCTracker&) = delete;
    UGCTracker& operator=(const UGCTracker&) = delete;

    // Ends worker and watcher and writes what is not written. From then on nothing touches the file; what is
    // on record can still be asked for.
    void Stop();

    // Queues a look at the whole gallery, which only adds. Success, whatever comes of it.
    KXP::RetVal UpdateTracker();
    // Takes the records whose files are gone out of `list`, and off the record. Success, always.
    KXP::RetVal SanitizeUGC(std::vector<TrackedUGC>& list);
    // Brings file and sum up to date, and tells the usage.
    KXP::RetVal Flush();
    KXP::RetVal DeleteTrackerFile();

    // Queue the work for one path; for a folder, what lies in it, and the whole gallery for that itself.
    void TrackFile(const std::string& path);
    void TrackFolder(const std::string& path);
    void UntrackFile(const std::string& path);

    bool IsTrackedFile(const std::string& path) const;
    bool CheckIfIgnored(const std::string& path) const { return ignoreList_.Has(path); }
    void AddToIgnoreList(const std::vector<std::string>& paths) { ignoreList_.Add(paths); }
    bool AddToIgnoreListIfNone(const std::vector<std::string>& paths) { return ignoreList_.AddIfNone(paths); }
    void RemoveFromIgnoreList(const std::vector<std::string>& paths) { ignoreList_.Remove(paths); }

    // 0x80070002 for a path that is not on record.
    KXP::RetVal GetUGCData(const std::string& path, TrackedUGC& out) const;
    KXP::RetVal GetTrackedGames(std::vector<std::string>& out) const;
    // The game's captures whose files are there, oldest first.
    KXP::RetVal GetSanatizedGameUGC(const std::string& game, std::vector<TrackedUGC>& out);
    // The same and its highlights in flight, newest first.
    KXP::RetVal GetGameUGC(const std::string& game, std::vector<TrackedUGC>& out);
    // Of all games, newest first.
    KXP::RetVal GetRecentUGC(unsigned count, std::vector<TrackedUGC>& out);
    KXP::RetVal GetAppStats(const std::string& game, unsigned& videos, unsigned& images);
    // Deletes the file, and its folder when that is then empty. The watcher takes it off the record.
    KXP::RetVal DeleteUGC(const TrackedUGC& record);
    unsigned GetCurrentSizeMB() const;
    // Cuts `lengthMs` from `headTrimMs` on out of a video; over itself when both paths are the same, and the
    // input is then untouched until the clip is whole. Success once the clip is on record; 0x80004005 when it
    // is not after two seconds, though it may be there. Not on the worker.
    KXP::RetVal TrimUGC(const std::string& input, const std::string& output, double headTrimMs,
                        double lengthMs);
    // The texts laid over a capture, both empty for none. 0x80070002 for a path that is not on record.
    KXP::RetVal AddMeme(const std::string& path, const std::string& topBarText,
                        const std::string& bottomBarText);

    // Highlights. The first gives `highlight` the id that its capture will have; unless its file comes within
    // a minute of its end, it is cancelled.
    void EnqueuePendingHighlight(Highlight& highlight);
    bool DequeuePendingHighlight(const Highlight& highlight) { return pendingHighlights_.Dequeue(highlight); }
    // For a capture that was tracked before it was known to be this highlight.
    void UpdateHighlightInfo(const Highlight& highlight);
    void GetPendingHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const;
    // 0x80070002 when there is none, in flight or tracked.
    KXP::RetVal GetHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                              const std::string& group) const;
    // A mask of 0 lets all pass.
    KXP::RetVal GetFilteredHighlights(std::vector<TrackedUGC>& out, const std::string& game,
                                      const std::string& group, int tagMask, int significanceMask) const;
    KXP::RetVal DeleteTrackedHighlights(const std::vector<TrackedUGC>& records);
    KXP::RetVal DeleteTrackedHighlightGroup(const std::string& group, const std::string& game);

    // Tells the host something more, behind what is to be told of everything on record so far.
    void Tell(std::function<void()> event);

    // For tests that run the worker's entries themselves.
    KXP::TaskQueue& queue() { return queue_; }

  private:
    using RecordPtr = RecordStore::RecordPtr;

    // What is to be told once the file is written.
    struct Step {
        enum Kind { Tick, Silent, Added, Removed, Flushed, Called } kind;
        RecordPtr record;  // of Added and Removed
        uint32_t usageKB;  // as of this step
        std::function<void()> call = nullptr;
    };

    // Start and rebuild.
    void OpenFile(bool useUniqueFile);
    void StartWatcher(WatcherOptions options);
    void ParseTracker() EXCLUDES(mutex_);
    bool LoadRecords(const KXP::Value& document, uint32_t& usageKB) EXCLUDES(mutex_);
    void Rebuild(const char* reason) EXCLUDES(mutex_);
    void FinishRebuild() EXCLUDES(mutex_);
    void TakeOverTrackerFile() EXCLUDES(mutex_);

    void MakeGallery() const;

    // Work on paths: it is known to wait until it is begun.
    void EnqueueWork(const void* tag, std::function<void()> work);
    bool KnowsAll() EXCLUDES(mutex_);
    bool IsSettled(const std::string& path) const EXCLUDES(mutex_);
    void NoteRefused(const std::string& path) EXCLUDES(mutex_);

    // Tracking, on the worker.
    void EnqueueTrack(const std::string& path);
    KXP::RetVal TrackFileTask(const std::string& path) EXCLUDES(mutex_);
    void EnterRecord(TrackedUGC record) EXCLUDES(mutex_);
    void TakeHighlight(const Highlight& highlight, TrackedUGC& record);
    void EndStep() EXCLUDES(mutex_);
    void PaySum() EXCLUDES(mutex_);
    bool MayWaitForNext() EXCLUDES(mutex_);
    void UntrackPath(const std::string& path) EXCLUDES(mutex_);

    // A clip that takes the place of its source. Whoever takes it on from Pending decides what becomes of it.
    enum class Swap { Pending, Moving, Done, Failed };
    KXP::RetVal TrimInPlace(const std::string& path, double headTrimMs, double lengthMs);
    bool Cut(const std::string& input, const std::string& output, double headTrimMs, double lengthMs);
    void QueueSwap(const std::string& temporary, const std::string& output,
                   std::shared_ptr<std::atomic<Swap>> swap);
    KXP::RetVal AwaitClip(const std::string& output, const std::atomic<Swap>& swap) const;

    // Any thread.
    size_t Untrack(const std::vector<std::string>& paths) EXCLUDES(mutex_);
    void SanitizePaths(const std::vector<std::string>& gone) EXCLUDES(mutex_);
    void TellRemoved(const RecordPtr& record) REQUIRES(mutex_);
    // For what no write decides on: told at once, but behind what waits for one.
    void TellInOrder(Step step) REQUIRES(mutex_);
    void AppendStep(Step step) REQUIRES(mutex_);
    int32_t NextId() REQUIRES(mutex_);
    uint32_t UsageKB() const EXCLUDES(mutex_);

    // Writing.
    // Of the gallery's tree. What is pending renews it in any case, but for Later, which puts it off when it
    // takes long.
    enum class Sum { Keep, Renew, Later };
    KXP::RetVal WriteUGCToTracker(Sum sum, bool tellUsage) EXCLUDES(mutex_);
    KXP::RetVal WriteSnapshot(size_t& steps) EXCLUDES(mutex_);
    void RenewSum(bool pending) EXCLUDES(mutex_);
    void QueueRelease();
    void ReleaseSum() EXCLUDES(mutex_);
    void FinishRun(Sum sum) EXCLUDES(mutex_);
    bool MeasureFolder(uint32_t& crc);
    void TellSteps(size_t count, const KXP::RetVal& written) EXCLUDES(mutex_);
    void TellStep(const Step& step);
    static bool NeedsWrite(const Step& step);

    void RemoveFromGroups(const std::vector<TrackedUGC>& records) EXCLUDES(mutex_);

    void UpdateGalleryUsage(uint32_t usageKB);
    void MonitorDiskSpace();
    void CheckDiskSpace();

    ITrackerHost& host_;
    KXP::Clock& clock_;
    const std::string shareFolder_;
    // Ends in "/". A tracker belongs to one gallery; another folder gets a tracker of its own.
    const std::string gallery_;
    const std::chrono::milliseconds sumInPassing_;

    // With synchronisation of their own.
    IgnoreList ignoreList_;
    PendingHighlights pendingHighlights_;
    CapWatch capWatch_;
    Outbox outbox_;
    std::atomic<bool> updateInProgress_;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> sumOwed_{false};  // put off, for the worker to make
    std::atomic<size_t> waiting_{0};    // entries of the queue that work on paths

    mutable KXP::Mutex mutex_;
    RecordStore records_ GUARDED_BY(mutex_);
    int32_t lastUGCIdUsed_ GUARDED_BY(mutex_) = 0;
    uint32_t usageKB_ GUARDED_BY(mutex_) = 0;
    uint32_t folderCRC_ GUARDED_BY(mutex_) = 0;
    bool fileTaken_ GUARDED_BY(mutex_) = false;
    // The last files that were looked at and are none of ours.
    std::set<std::string> refused_ GUARDED_BY(mutex_);
    // Tracked and not yet written, and since when.
    std::vector<Step> run_ GUARDED_BY(mutex_);
    KXP::TimePoint runStart_ GUARDED_BY(mutex_);

    // The file belongs to whoever's turn it is. A turn is no mutex that is held, because writing and summing
    // up log; who has it may take mutex_, and not the other way round.
    class FileTurn {
      public:
        explicit FileTurn(UGCTracker& tracker);
        ~FileTurn();
        FileTurn(const FileTurn&) = delete;
        FileTurn& operator=(const FileTurn&) = delete;

      private:
        UGCTracker& tracker_;
    };
    KXP::CondVar turnEnded_;
    // By turn.
    KXP::JSONFile trackerFile_;
    TrackerFileWriter writer_;
    std::unique_ptr<IFileWatcher> watcher_;
    std::chrono::nanoseconds sumTook_{0};  // the last time
    // The file holds a sum that fits no tree: more was known to come when it was written.
    bool sumWithheld_ = false;
    bool releaseQueued_ = false;
    bool replaceTrackerFile_;
    bool stopped_ = false;

    bool lowDiskResetFlag_ = false;  // worker

    // Entries of the queue use all of the above. Stop ends it before the watcher, whose events it drops then.
    KXP::TaskQueue queue_;
};
