// How a path gets on record: the entries of the worker's queue, and what the product does itself.
#include <algorithm>
#include <exception>
#include <utility>

#include "CobalixUtil.h"
#include "base/FileDescriptor.h"
#include "base/Path.h"
#include "common/results/Exception.h"
#include "plugin-modules/Gallery/src/tracker/CaptureInspector.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

namespace {

// How long a new record may wait to be written. A user may be waiting to see a new capture; a rebuild may
// take its time, and is repeated if it does not finish.
constexpr std::chrono::milliseconds kLiveRun{100};
constexpr std::chrono::milliseconds kRebuildRun{1000};

// Whether what could not be looked at can be now, or is gone.
bool MayLook(const std::string& path, GalleryPlace::Kind kind) {
    const bool opened = kind == GalleryPlace::Kind::Capture ? KXP::OpenForRead(path).IsOpen()
                                                            : KXP::OpenFolder(path).IsOpen();
    return opened || IsGone(path);
}

// What an old file of the tracker, which anybody may have written, says of the same file.
KeptFacts HintOf(const TrackedUGC* former, const TrackedUGC& record) {
    const bool same = former && former->sizeKB == record.sizeKB && former->date == record.date;
    return same ? FactsOf(*former, TrackedUGC::IsAHighlight(*former)) : KeptFacts{};
}

}  // namespace

// Marks the queue's entries that track or untrack a file; those in a row share a write.
const char UGCTracker::kRunTag = 0;

void UGCTracker::TrackFile(const std::string& path) {
    if (const std::optional<std::string> place = place_.CapturePathOf(path)) TrackWatchedFile(*place);
}

void UGCTracker::TrackWatchedFile(const std::string& path) {
    if (place_.KindOf(path) != GalleryPlace::Kind::Capture || ignoreList_.Has(path)) return;
    // Only who writes the record gives ids; the others are shown the file by it.
    if (journal_.Owns()) EnqueueWork(&kRunTag, queue_.Now(), [this, path] { TrackOrLog(path); });
}

void UGCTracker::TrackFolder(const std::string& path) {
    const GalleryPlace::Kind kind = place_.KindOf(path);
    // The whole gallery is tracked before files in it that are reported from now on: in its order.
    const KXP::TimePoint when = queue_.Now();
    if (kind == GalleryPlace::Kind::Gallery)
        EnqueueWork(nullptr, when, [this, when] { UpdateTracker({}, when); });
    if (kind == GalleryPlace::Kind::Game) EnqueueWork(nullptr, when, [this, path] { TrackFilesIn(path); });
}

void UGCTracker::TrackFilesIn(const std::string& folder) {
    const FoundFiles found = ScanFolder(folder);
    for (const FoundFile& file : found.files)
        TrackWatchedFile(file.path);
    found.unread.empty() ? backlog_.ClearFailed(folder) : NoteFailedLook(folder);
}

void UGCTracker::UntrackFile(const std::string& path) {
    if (ignoreList_.Has(path)) return;
    const uint64_t before = record_.nextPlace();
    EnqueueWork(&kRunTag, queue_.Now(), [this, path, before] { UntrackPath(path, before); });
}

// The backlog counts an entry until it is done: until then a known change is missing from the record.
void UGCTracker::EnqueueWork(const void* tag, KXP::TimePoint when, std::function<void()> work) {
    backlog_.Begin();
    queue_.EnqueueTagged(when, tag, [this, work = std::move(work)] {
        RunOrLookAgain(gallery(), work);
        backlog_.End();
        FinishEntry();
    });
}

void UGCTracker::RunOrLookAgain(const std::string& path, const std::function<void()>& work) noexcept {
    try {
        try {
            work();
        } catch (const std::exception& error) {
            KXP_LOG(KXP::LogFailure, "Exception while tracking: %s", error.what());
            NoteFailedLook(KXP::WithoutSlash(path));
        }
    } catch (...) {
        KXP_LOG(KXP::LogFailure, "No memory to note that %s has to be looked at again", path.c_str());
    }
}

void UGCTracker::EnqueueFinish() {
    queue_.EnqueueTagged(queue_.Now(), &kRunTag, [this] { FinishEntry(); });
}

void UGCTracker::FinishEntry() {
    queue_.AssertOnWorker();
    const std::chrono::milliseconds run = record_.rebuilding() == Rebuilding::No ? kLiveRun : kRebuildRun;
    const bool mayWait = queue_.NextDueIs(&kRunTag) && news().MayWait(run);
    if (!mayWait && news().HasUnwritten()) (void)Write(Sum::Later);
    news().Drain();
    if (!queue_.NextDueIs(&kRunTag)) PaySum();
}

void UGCTracker::TrackNow(const std::string& path) {
    const std::optional<std::string> place = place_.CapturePathOf(path);
    if (!place || !journal_.Owns()) return;
    journal_.NoteChanged(*place);
    TrackOrLog(*place);
    EnqueueFinish();
}

void UGCTracker::UntrackNow(const std::string& path) {
    if (const RecordPtr record = FindRecord(path)) {
        journal_.NoteChanged(record->path);
        record_.Remove({record->path});
    }
    EnqueueFinish();
}

void UGCTracker::MoveNow(const std::string& from, const std::string& to) {
    const RecordPtr record = FindRecord(from);
    const std::optional<std::string> place = place_.CapturePathOf(to);
    if (record) journal_.NoteChanged(record->path);
    if (place) journal_.NoteChanged(*place);
    if (record) record_.Remove({record->path});
    if (!journal_.Owns()) return EnqueueFinish();
    if (place) record ? TrackMoved(*record, *place) : TrackOrLog(*place);
    EnqueueFinish();
}

void UGCTracker::TrackMoved(const TrackedUGC& record, const std::string& place) {
    const NewUGC moved = std::make_shared<TrackedUGC>(record);
    moved->path = place;
    // It may have been changed a moment before.
    if (StampAt(place) != record.stamp) {
        Inspection inspection = InspectCapture(place);
        if (inspection.finding != Inspection::Finding::Capture) return TrackOrLog(place);
        *moved = std::move(inspection.record);
        moved->id = record.id;
    }
    record_.Track(moved, record_.GivenTo(record));
}

bool UGCTracker::AwaitTracked(const std::string& path, std::chrono::steady_clock::time_point until,
                              const std::atomic<bool>& cancelled) const {
    const std::optional<std::string> place = place_.CapturePathOf(path);
    if (!place) return false;
    return record_.Await(*place, until, cancelled, stopping_);
}

void UGCTracker::TrackOrLog(const std::string& path, const TrackedUGC* former) {
    KXP::RetVal result;
    try {
        result = TrackFileTask(path, former);
    } catch (...) {
        result = KXP::ExceptionToRetVal();
        NoteFailedLook(path);
    }
    if (result.Failed()) KXP_LOG(KXP::LogFailure, "Track File failed %s", KXP::ToStr(result).c_str());
}

KXP::RetVal UGCTracker::TrackFileTask(const std::string& path, const TrackedUGC* former) {
    const RecordPtr known = record_.At(path);
    if (known && known->stamp.IsKnown() && known->stamp == StampAt(path))
        return {KXP::Code::kNothingDone, "File is already tracked as UGC", 0};
    Inspection inspection = InspectCapture(path);
    if (inspection.finding == Inspection::Finding::Unreadable) {
        NoteFailedLook(path);
        return inspection.result;
    }
    backlog_.ClearFailed(path);
    if (inspection.finding == Inspection::Finding::Capture) {
        const KeptFacts hint = HintOf(former, inspection.record);
        known ? record_.Renew(std::move(inspection.record))
              : record_.Track(std::make_shared<TrackedUGC>(std::move(inspection.record)), hint);
    } else if (inspection.finding == Inspection::Finding::NoCapture) {
        backlog_.NoteRefused(path, inspection.record.stamp);
        if (known) record_.Remove({path});
    }
    return inspection.result;
}

// What could not be looked at may be there all the same.
void UGCTracker::NoteFailedLook(const std::string& path) {
    const std::optional<Backlog::NextLook> next = backlog_.NoteFailed(path);
    if (!next) return;
    if (next->first)
        KXP_LOG(KXP::LogFailure, "%s could not be read, and will be looked at again", path.c_str());
    queue_.EnqueueNotification(queue_.Now() + next->after, [this, path] { LookAgain(path); });
}

void UGCTracker::LookAgain(const std::string& path) {
    queue_.AssertOnWorker();
    backlog_.BeginLook(path);
    RunOrLookAgain(path, [&] {
        const GalleryPlace::Kind kind = place_.KindOf(path);
        if (!MayLook(path, kind)) return NoteFailedLook(path);
        NoteDisturbed(path);
        if (kind == GalleryPlace::Kind::Gallery) {
            backlog_.ClearFailed(path);
            UpdateTracker({}, queue_.Now());
        } else if (kind == GalleryPlace::Kind::Game) {
            TrackFilesIn(path);
            DropGoneIn(path);
        } else {
            TrackOrLog(path);
        }
    });
    FinishEntry();
}

void UGCTracker::DropGoneIn(const std::string& folder) {
    DropGone(record_.PathsIn(folder));
}

void UGCTracker::DropGone(std::vector<std::string> paths) {
    const auto isThere = [](const std::string& path) { return !IsGone(path); };
    paths.erase(std::remove_if(paths.begin(), paths.end(), isThere), paths.end());
    record_.Remove(paths);
}

// For a folder this removes all records in it. A record that was added after the report is of another file.
void UGCTracker::UntrackPath(const std::string& path, uint64_t before) {
    queue_.AssertOnWorker();
    (void)place_.IsScanned();  // the drive may be back before the write
    const bool isFile = place_.KindOf(path) == GalleryPlace::Kind::Capture;
    if (record_.Remove({path}, before) == 0 && (isFile || record_.Remove(record_.PathsIn(path), before) == 0))
        KXP_LOG(KXP::LogFailure, "UntrackFile failed");
}
