// The captures on record, what people gave them, and the notifications of every change. It inspects no file
// and writes none but that of kept facts; the tracker does that.
//
// Any thread. A change is on record when the call returns; its notification waits in news() for the write and
// for who drains it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/results/RetVal.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/tracker/CapacityWatch.h"
#include "plugin-modules/Gallery/src/tracker/ITrackerHost.h"
#include "plugin-modules/Gallery/src/tracker/News.h"
#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"
#include "plugin-modules/Gallery/src/tracker/kept/KeptCaptures.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

class GalleryRecord {
  public:
    using RecordPtr = RecordStore::RecordPtr;
    using TimePoint = std::chrono::steady_clock::time_point;

    // Whether a rebuild is in progress, and which kind. The state in the settings serves only the next start.
    enum class Rebuilding {
        No,
        Silently,   // at a start, or after the gallery's folder has come back; pages are not notified
        InOneFile,  // after a change of the gallery; pages are notified of its progress
    };

    // `host` and `capacity` outlive it; `capacity` is used when notifications are delivered.
    GalleryRecord(ITrackerHost& host, CapacityWatch& capacity, const std::string& shareFolder,
                  KXP::Clock& clock, Rebuilding rebuilding);

    News& news() { return news_; }
    KeptCaptures& kept() { return kept_; }
    Rebuilding rebuilding() const { return rebuilding_; }
    void SetRebuilding(Rebuilding rebuilding) { rebuilding_ = rebuilding; }

    // The whole content.
    void Clear() EXCLUDES(mutex_);
    void Reserve(size_t count) EXCLUDES(mutex_);
    void Load(std::vector<NewUGC> records, TrackedUGCGames games, int32_t lastId) EXCLUDES(mutex_);
    // What another process has on record now. Pages are notified of the difference if `notify` is set.
    void Follow(std::vector<NewUGC> records, int32_t lastId, bool notify) EXCLUDES(mutex_);
    // For the tracker's file.
    TrackerFileWriter::Content TakeContent(const TrackerFileWriter& writer) EXCLUDES(mutex_);

    // Single captures. A record that is new gets what was kept of its file, or else `hint`. It keeps its id
    // if that is above 0 and free. A second record of a path is not added.
    void Track(NewUGC record, const KeptFacts& hint) EXCLUDES(mutex_);
    // The file at the path has changed.
    void Renew(TrackedUGC record) EXCLUDES(mutex_);
    // Removes the records of these paths that were added before place `before`, and returns how many.
    size_t Remove(const std::vector<std::string>& paths, uint64_t before = UINT64_MAX) EXCLUDES(mutex_);

    // What people gave. None of these is on disk before kept().Save().
    KeptFacts GivenTo(const TrackedUGC& record) const;
    void Keep(const TrackedUGC& record, const KeptFacts& facts);
    // Puts on record what is kept of the capture now, whoever has changed it last. `stamp` is the file's, of
    // which the record may not know yet.
    void ShowKept(const std::string& path, const FileStamp& stamp) EXCLUDES(mutex_);
    // Notes which of the facts kept of captures in `gallery` are of files that are gone, and makes their file
    // short if it is long.
    void SortOutKept(const std::string& gallery, const std::atomic<bool>& stop) EXCLUDES(mutex_);

    // Announcements and highlights.
    // Puts the announcement on record if the file is, and returns the id that the record had; otherwise the
    // announcement waits for the file.
    std::optional<int32_t> Announce(const std::string& path, const Announcement& announcement)
        EXCLUDES(mutex_);
    // Sets the highlight's id and puts it among those in flight.
    void Promise(Highlight& highlight) EXCLUDES(mutex_);
    // The highest id on record or promised.
    int32_t LastId() const EXCLUDES(mutex_);
    // Removes these highlights, also from their groups, and sets their paths.
    void TakeHighlights(std::vector<TrackedUGC>& records) EXCLUDES(mutex_);
    struct Group {
        bool knowsGame = false;
        bool knowsGroup = false;
        std::vector<TrackedUGC> records;
    };
    Group OfGroup(const std::string& game, const std::string& group) const EXCLUDES(mutex_);

    // Queries.
    RecordPtr At(const std::string& path) const EXCLUDES(mutex_);
    std::vector<RecordPtr> Snapshot() const EXCLUDES(mutex_);
    std::vector<std::string> PathsIn(const std::string& folder) const EXCLUDES(mutex_);
    std::vector<RecordPtr> OfGame(const std::string& game) const EXCLUDES(mutex_);
    std::vector<RecordPtr> Newest(size_t count, RecordStore::IdKey& end) const EXCLUDES(mutex_);
    std::vector<std::string> Games() const EXCLUDES(mutex_);
    size_t size() const EXCLUDES(mutex_);
    uint32_t usageKB() const EXCLUDES(mutex_);
    uint64_t SumKB() const EXCLUDES(mutex_);
    // A record that is added later has this place or a higher one.
    uint64_t nextPlace() const EXCLUDES(mutex_);
    // Waits until the path is on record. False at `until`, or when one of the others is set and Wake called
    // after that.
    bool Await(const std::string& path, TimePoint until, const std::atomic<bool>& cancelled,
               const std::atomic<bool>& stopping) const EXCLUDES(mutex_);
    void Wake() EXCLUDES(mutex_);

  private:
    void Complete(TrackedUGC& record);
    KeptPtr KeptOf(const TrackedUGC& record) const;
    KeptFacts TakeHighlight(TrackedUGC& record, bool told) REQUIRES(mutex_);
    void UpdateHighlight(const TrackedUGC& found, const Highlight& highlight) REQUIRES(mutex_);
    void NotifyAnnounced(const std::string& path, const Announcement& announcement);
    bool IsFreeId(int32_t id) const REQUIRES(mutex_);
    int32_t NewId() REQUIRES(mutex_);
    void AddTrackedNews(const RecordPtr& entered) REQUIRES(mutex_);
    const char* RemoveFromGroup(const std::string& game, const std::string& group, const std::set<int>& ids)
        REQUIRES(mutex_);
    void AddRemovedNews(const RecordPtr& record) REQUIRES(mutex_);
    void AddUsageNews() REQUIRES(mutex_);

    ITrackerHost& host_;
    CapacityWatch& capacity_;
    News news_;
    KeptCaptures kept_;
    std::atomic<Rebuilding> rebuilding_;

    // Comes before the mutexes of Announcements, PendingHighlights, KeptCaptures and News.
    mutable KXP::OuterMutex mutex_;
    mutable KXP::CondVar entered_;  // a record was added, or a wait has to end
    RecordStore records_ GUARDED_BY(mutex_);
};
