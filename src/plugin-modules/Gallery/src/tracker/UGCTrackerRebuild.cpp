// How the record is read at the start, and made anew.
#include <algorithm>
#include <future>
#include <set>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/FreedMemory.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

// Files of a rebuild for each entry of the queue.
constexpr size_t kSome = 32;

bool HasFacts(const TrackedUGC& record) {
    return !record.topBarText.empty() || !record.bottomBarText.empty() || TrackedUGC::IsAHighlight(record);
}

// The paths of the files in these folders and in folders of theirs.
std::unordered_set<std::string> FilesSeenIn(const std::vector<std::string>& folders,
                                            const media::SeenFiles& seen) {
    const std::set<std::string> asked(folders.begin(), folders.end());
    std::vector<bool> isIn;
    for (const std::string& folder : seen.folders)
        isIn.push_back(asked.count(folder) > 0 || asked.count(KXP::ParentOf(folder)) > 0);
    std::unordered_set<std::string> paths;
    for (const media::SeenFiles::File& file : seen.files)
        if (isIn[file.folder]) paths.insert(seen.folders[file.folder] + "/" + &seen.names[file.name]);
    return paths;
}

}  // namespace

void UGCTracker::ParseTracker(bool watch) {
    place_.NoteScanned();
    uint32_t calculated = UINT32_MAX;
    media::SeenFiles seen;
    // Starting the watcher and walking takes about as long as parsing, and neither needs the other. It does
    // not begin before the file is open, so that it cannot take its descriptor.
    std::future<bool> sum;
    const auto walk = [&] {
        if (sum.valid()) return;
        sum = std::async([&] { return WatchAndMeasure(watch, calculated, seen); });
    };
    KXP::Document document;
    TrackerInfo info;
    TrackerJournal::Stamps stamps;
    RebuildPlan::Former former;
    const bool read = !journal_.Read(document, former.records, info, &stamps, walk).Failed();
    former.TakeStamps(stamps);
    // Without a file there was nothing to parse meanwhile, and a thread would only cost time.
    const bool measured = sum.valid() ? sum.get() : WatchAndMeasure(watch, calculated, seen);
    if (!Watcher()) journal_.ForgetTree();
    const auto rebuild = [&](const char* reason) {
        std::optional<FoundFiles> found;
        if (measured && seen.legible) {
            found = FilesSeen(seen);
            journal_.RecordFollows(calculated);
        }
        Rebuild(reason, std::move(former), std::move(found));
    };
    // If the settings still say that a rebuild is in progress, an earlier start did not finish it.
    if (!read || info.version != kTrackerVersion ||
        host_.GetGallerySettings()->GetTrackerUpdateState() == TrackerUpdateInProgress)
        return rebuild("ParseTracker::rebuilding from GalleryPath");

    TrackedUGCGames games;
    if (ParseUGCGamesFromJSON(document, games).Failed()) {
        KXP_LOG(KXP::LogFailure, "ParseTracker::Failed to parse Games from tracker");
        return Load(std::move(former), {}, info.lastUGCIdUsed);
    }
    KXP_LOG(KXP::LogMilestone, "CRC Check: Tracker value: %s, calculated value: %s",
            std::to_string(info.folderCRC).c_str(), std::to_string(calculated).c_str());
    if (measured && calculated == info.folderCRC) {
        Load(std::move(former), std::move(games), info.lastUGCIdUsed);
        CompareRecent(seen);
    } else {
        rebuild("ParseTracker::Folder CRC mismatch, rebuilding from GalleryPath");
    }
    capacity_.UpdateGalleryUsage(record_.usageKB());
}

// One walk through the gallery serves both.
bool UGCTracker::WatchAndMeasure(bool watch, uint32_t& sum, media::SeenFiles& seen) {
    std::optional<bool> measured;
    const auto walk = [&](KXP::IFolderVisitor& visitor) {
        seen.visitor = &visitor;
        measured = journal_.MeasureFolder(sum, &seen);
        seen.visitor = nullptr;
    };
    if (watch) StartWatcher(walk);
    return measured ? *measured : journal_.MeasureFolder(sum, &seen);
}

// A file that was moved within the second of the sum is in the sum under either name.
void UGCTracker::CompareRecent(const media::SeenFiles& seen) {
    std::vector<std::string> folders;
    for (const std::string& path : seen.recent)
        place_.KindOf(path) == GalleryPlace::Kind::Capture ? TrackWatchedFile(path) : folders.push_back(path);
    if (folders.empty() || !journal_.Owns()) return;
    const std::unordered_set<std::string> present = FilesSeenIn(folders, seen);
    std::vector<std::string> gone;
    for (const std::string& folder : folders)
        for (std::string& path : record_.PathsIn(folder))
            if (present.count(path) == 0) gone.push_back(std::move(path));
    EnqueueWork(nullptr, queue_.Now(), [this, gone = std::move(gone)] { DropGone(gone); });
}

// What people gave is kept before it is in the tracker's file, so it is never older. Only somebody who has
// edited that file since knows better.
void UGCTracker::Load(RebuildPlan::Former former, TrackedUGCGames games, int32_t lastId) {
    for (const NewUGC& record : former.records) {
        if (!former.isOwn) {
            record->stamp = StampAt(record->path);
            if (HasFacts(*record)) record_.Keep(*record, FactsOf(*record, TrackedUGC::IsAHighlight(*record)));
        } else if (const KeptPtr given = kept().LatestOf(record->path, record->stamp)) {
            Apply(given->facts, *record);
        }
    }
    record_.Load(std::move(former.records), std::move(games), lastId);
}

void UGCTracker::Rebuild(const char* reason, RebuildPlan::Former former, std::optional<FoundFiles> found) {
    record_.Clear();
    KXP_LOG(KXP::LogMilestone, "%s", reason);
    if (found) {
        TrackAll(std::move(*found), std::move(former), queue_.Now());
    } else {
        UpdateTracker(std::move(former), queue_.Now());
    }
}

void UGCTracker::UpdateTracker(RebuildPlan::Former former, KXP::TimePoint when) {
    place_.NoteScanned();
    TrackAll(ScanGallery(gallery()), std::move(former), when);
}

void UGCTracker::TrackAll(FoundFiles found, RebuildPlan::Former former, KXP::TimePoint when) {
    for (const std::string& folder : found.unread)
        NoteFailedLook(folder);
    if (record_.rebuilding() == Rebuilding::No) record_.SetRebuilding(Rebuilding::Silently);
    // Written before the first file is queued, so that the next start rebuilds if the process ends now.
    host_.SetTrackerState(TrackerUpdateInProgress);
    backlog_.BeginRebuild();
    const auto plan = std::make_shared<RebuildPlan>(std::move(found), std::move(former),
                                                    KXP::Platform::KeepsInodes(gallery()));
    record_.Reserve(plan->size());
    for (size_t enqueued = 0; enqueued < plan->size(); enqueued += kSome)
        EnqueueWork(&kRunTag, when, [this, plan] { TrackSome(*plan); });
    if (record_.rebuilding() == Rebuilding::InOneFile)
        queue_.EnqueueNotification(queue_.Now(),
                                   [this] { RunOrLookAgain(gallery(), [this] { FinishRebuild(); }); });
    queue_.EnqueueNotification(queue_.Now(), [this] {
        record_.SetRebuilding(Rebuilding::No);
        journal_.RecordFollows({});
        host_.SetTrackerState(TrackerUpdateComplete);
        host_.SetUsage(record_.usageKB() / 1000);
        backlog_.EndRebuild();
        KXP_LOG(KXP::LogMilestone, "Tracker update done");
        KXP::Platform::ReturnFreedMemory();
    });
}

void UGCTracker::TrackSome(RebuildPlan& plan) {
    queue_.AssertOnWorker();
    for (size_t left = kSome; left > 0; --left) {
        std::optional<RebuildPlan::Step> step = plan.Next();
        if (!step) return;
        if (ignoreList_.Has(step->path)) continue;
        if (step->unchanged) {
            // What was reported of it has been kept ever since, so the record need not say so.
            const KeptFacts facts = FactsOf(*step->former, false);
            step->former->id = 0;
            record_.Track(std::move(step->former), facts);
        } else {
            TrackOrLog(step->path, step->former.get());
        }
    }
}

void UGCTracker::FinishRebuild() {
    queue_.AssertOnWorker();
    journal_.TakeOver();
    (void)Sanitize(record_.Snapshot());
    news().AddAtOnce([this, usageKB = record_.usageKB()] {
        capacity_.UpdateGalleryUsage(usageKB);
        host_.NotifyTrackerUpdate(TrackerUpdateComplete);
    });
    news().Drain();
    record_.SetRebuilding(Rebuilding::Silently);
}
