#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/watcher/linux/PathRange.h"

namespace watcher {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kWorkSlice{10};
constexpr size_t kFoldersPerPoll = 64;
// The clock of files may be late by one tick.
constexpr int64_t kFileTickNs = 20000000;
// The sum of the gallery's tree sees changes of files by whole seconds.
constexpr int64_t kYoungNs = 2000000000;

// The path to which "/" and a name are appended: empty for the root.
std::string PrefixOf(const std::string& folder) {
    return folder == "/" ? "" : KXP::WithoutSlash(folder);
}

}  // namespace

TreeFollower::TreeFollower(const std::string& root, const WatcherOptions& options, int64_t newsFromNs,
                           EventWindow& window, const std::atomic<bool>& stop)
    : root_{PrefixOf(root), {}},
      gallery_{options.gallery.empty() ? root_.path : PrefixOf(options.gallery), {}},
      options_(options),
      stop_(stop),
      ledger_(gallery_.path, options.settle, window),
      tree_(options.maxWatches) {
    ledger_.SetNewsFrom(newsFromNs - kFileTickNs);
}

TreeFollower::Identity TreeFollower::NamedFolder::Look() const {
    const Item item = LookAt(path, true);
    if (item.kind != ItemKind::Folder) return {};
    return {true, item.volume, item.stamp.inode};
}

void TreeFollower::Begin(bool silent) {
    jobs_.Clear();
    poll_.Clear();
    eventsLost_ = false;
    OpenTree();
    root_.seen = root_.Look();
    gallery_.seen = gallery_.Look();
    onNetwork_ = IsOnNetwork(gallery_.path);
    rootsDue_ = steady_clock::now() + options_.pollInterval;
    pollDue_ = rootsDue_;
    // Outside the gallery there is no record to compare with, so only changes from now on are reported.
    if (root_.path != gallery_.path) Look({root_.path, true});
    Push({gallery_.path, silent});
}

void TreeFollower::OpenTree() {
    if (options_.polling || tree_.Reopen()) return;
    if (!std::exchange(logged_.noEvents, true))
        KXP_LOG(KXP::LogFailure, "No file events to be had (%s), looking at folders instead",
                std::strerror(errno));
}

void TreeFollower::Recover() {
    KXP_LOG(KXP::LogFailure, "File events were lost, comparing with the disk");
    ledger_.SetNewsFrom(FileClockNs() - kFileTickNs);
    Begin(false);
}

void TreeFollower::Push(FolderJob job) {
    const bool ofGallery = ledger_.IsInGallery(job.folder);
    jobs_.Push(std::move(job), ofGallery);
}

void TreeFollower::RunJobs(TimePoint until) {
    while (!stop_ && !jobs_.IsEmpty() && steady_clock::now() < until)
        Look(jobs_.Pop());
}

// Watch first, then read: what appears in between is found by the watch, the reading, or both.
void TreeFollower::Look(const FolderJob& job) {
    const bool inGallery = ledger_.IsInGallery(job.folder);
    const Watched watched = tree_.Watch(job.folder, inGallery, IsNamed(job.folder));
    if (watched == Watched::LeftOut) NoteLeftOut(job.folder);
    if (watched == Watched::Gone || (watched == Watched::LeftOut && !inGallery)) return;

    FolderSnapshot snapshot;
    const bool taken = TakeSnapshot(job.folder, IsNamed(job.folder), stop_, snapshot);
    // A folder that cannot be read, for instance because no descriptor is left, is tried again.
    if (inGallery && !taken && LookAt(job.folder).kind == ItemKind::Folder) poll_.AddUnread(job.folder);
    if (!taken) return;
    if (inGallery && (watched != Watched::Yes || onNetwork_)) poll_.Add(job.folder, snapshot.folder);
    if (snapshot.illegible > 0) NoteIllegible(job.folder);

    const ReportLedger::Folders folders = ledger_.Compare(job.folder, snapshot, job.silent);
    for (const std::string& gone : folders.gone)
        LoseFolder(gone, ItemRemoved);
    PushFoldersIn(job, snapshot, folders.appeared);
}

void TreeFollower::PushFoldersIn(const FolderJob& job, const FolderSnapshot& snapshot,
                                 const std::vector<std::string>& appeared) {
    const bool inGallery = ledger_.IsInGallery(job.folder);
    const std::unordered_set<std::string> news(appeared.begin(), appeared.end());
    for (const FoundItem& entry : snapshot.entries) {
        if (entry.item.kind != ItemKind::Folder) continue;
        const std::string path = job.folder + "/" + entry.name;
        const bool isNew = news.count(path) > 0;
        if (!inGallery) {
            // Other volumes are not watched; some have no end. The gallery has a job of its own.
            if (entry.item.volume != snapshot.folder.volume || (path == gallery_.path && !isNew)) continue;
        }
        if (job.deep || isNew) Push({path, job.silent && !isNew});
    }
}

void TreeFollower::NoteLeftOut(const std::string& folder) {
    if (!tree_.inotify().IsOpen() || std::exchange(logged_.leftOut, true)) return;
    KXP_LOG(KXP::LogFailure, "No more watches to be had for %s and other folders: %s", folder.c_str(),
            std::strerror(errno));
}

void TreeFollower::NoteIllegible(const std::string& folder) {
    if (std::exchange(logged_.illegible, true)) return;
    KXP_LOG(KXP::LogFailure, "Passed over names in %s that are not UTF-8", folder.c_str());
}

void TreeFollower::AppearFolder(const std::string& path, uint32_t flag) {
    // Watches under this path belong to a folder that was here before and may have moved.
    tree_.UnwatchWithBeneath(path);
    ledger_.FolderAppeared(path, flag);
    if (path == gallery_.path) gallery_.seen = gallery_.Look();
    Push({path});
}

void TreeFollower::LoseFolder(const std::string& path, uint32_t flag) {
    tree_.UnwatchWithBeneath(path);
    poll_.RemoveWithBeneath(path);
    ledger_.FolderGone(path, flag);
    EraseWithBeneath(unfinished_, path);
    if (path == gallery_.path) gallery_.seen = {};
}

// Detects what no event reports: a folder further up was renamed, a volume was mounted or unmounted, or one
// of the two folders is back.
void TreeFollower::CheckRoots() {
    rootsDue_ = steady_clock::now() + options_.pollInterval;
    const Identity root = root_.Look();
    const Identity gallery = gallery_.Look();
    if (root != root_.seen) {
        if (root_.seen.exists) LoseRoot();
        if (!root.exists) return;
        KXP_LOG(KXP::LogMilestone, "Watched folder %s is there", root_.path.c_str());
        ledger_.FolderAppeared(root_.path, ItemCreated);
        if (gallery.exists && root_.path != gallery_.path) ledger_.FolderAppeared(gallery_.path, ItemCreated);
        Begin(false);
    } else if (gallery != gallery_.seen) {
        if (gallery_.seen.exists) LoseFolder(gallery_.path, ItemRemoved);
        if (gallery.exists) AppearFolder(gallery_.path, ItemCreated);
    }
}

void TreeFollower::LoseRoot() {
    KXP_LOG(KXP::LogMilestone, "Watched folder %s is gone", root_.path.c_str());
    jobs_.Clear();
    tree_.Close();
    poll_.Clear();
    ledger_.FolderGone(root_.path, ItemRemoved);
    root_.seen = {};
    gallery_.seen = {};
}

void TreeFollower::PollFolders(TimePoint now) {
    if (!poll_.InRound() && now >= pollDue_ && !poll_.IsEmpty()) poll_.StartRound();
    if (!poll_.InRound()) return;
    for (std::string& folder : poll_.CheckNext(kFoldersPerPoll))
        Push({std::move(folder), false, false});
    if (poll_.InRound()) return;
    pollDue_ = now + (onNetwork_ ? options_.networkPollInterval : options_.pollInterval);
}

void TreeFollower::DoDueWork() {
    const TimePoint now = steady_clock::now();
    // Not before the current comparison has ended: under a steady flood of events none would ever finish.
    if (eventsLost_ && !jobs_.HasGalleryJobs()) Recover();
    if (now >= rootsDue_) CheckRoots();
    PollFolders(now);
    ledger_.LookAgain(now);
    RunJobs(now + kWorkSlice);
}

std::optional<std::vector<std::string>> TreeFollower::IncompleteFiles(size_t most) {
    if (!readAll_ || eventsLost_ || jobs_.HasGalleryJobs()) return std::nullopt;
    std::vector<std::string> incomplete = ledger_.UnsettledPaths();
    // Of files that were never closed only those written a moment ago count: a later write to any other gives
    // it a new time, which shows that it has changed.
    const int64_t young = FileClockNs() - kYoungNs;
    for (auto path = unfinished_.begin(); path != unfinished_.end() && incomplete.size() <= most;) {
        const Item item = LookAt(*path);
        if (item.kind != ItemKind::File) {
            path = unfinished_.erase(path);
            continue;
        }
        if (item.stamp.modifiedNs >= young) incomplete.push_back(*path);
        ++path;
    }
    if (incomplete.size() > most) return std::nullopt;
    return incomplete;
}

TimePoint TreeFollower::NextDue() const {
    if (eventsLost_ || poll_.InRound() || !jobs_.IsEmpty()) return {};
    const TimePoint due = std::min(rootsDue_, ledger_.NextLook());
    return poll_.IsEmpty() ? due : std::min(due, pollDue_);
}

}  // namespace watcher
