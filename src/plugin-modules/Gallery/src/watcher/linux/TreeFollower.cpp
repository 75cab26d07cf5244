#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "base/Path.h"
#include "base/Text.h"

namespace watcher {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kWorkSlice{10};
constexpr size_t kFoldersPerPoll = 64;

// The path to which "/" and a name are appended: empty for the root.
std::string PrefixOf(const std::string& folder) {
    return folder == "/" ? "" : KXP::WithoutSlash(folder);
}

}  // namespace

TreeFollower::TreeFollower(const std::string& root, const WatcherOptions& options, int64_t newsFromNs,
                           EventWindow& window, const std::atomic<bool>& stop)
    : root_{PrefixOf(root), {}},
      gallery_{options.gallery.empty() ? root_.path : PrefixOf(options.gallery), {}},
      around_(gallery_.path + "/.."),
      options_(options),
      stop_(stop),
      ledger_(gallery_.path, options.settle, window),
      tree_(options.maxWatches) {
    ledger_.SetNewsFrom(newsFromNs);
}

void TreeFollower::RunJobs(TimePoint until) {
    while (!stop_ && !jobs_.IsEmpty() && steady_clock::now() < until)
        Look(jobs_.Pop());
}

// Watch first, then read: what appears in between is found by the watch, the reading, or both.
void TreeFollower::Look(const FolderJob& job) {
    const Watched watched = WatchFolder(job.folder);
    if (watched == Watched::Gone) return;

    const bool named = IsNamed(job.folder);
    FolderSnapshot snapshot;
    if (!TakeSnapshot(job.folder, named, stop_, snapshot)) {
        const ItemKind there = LookAt(job.folder, named).kind;
        if (there == ItemKind::Folder || there == ItemKind::Unknown) NoteUnread(job.folder);
        return;
    }
    TakeIn(job, watched, snapshot);
}

Watched TreeFollower::WatchFolder(const std::string& folder) {
    const Watched watched = tree_.Watch(folder, true, IsNamed(folder));
    if (watched == Watched::LeftOut) NoteLeftOut(folder);
    return watched;
}

void TreeFollower::TakeIn(const FolderJob& job, Watched watched, const FolderSnapshot& snapshot) {
    if (!snapshot.allKnown)
        NoteUnread(job.folder);
    else if (watched != Watched::Yes || onNetwork_)
        poll_.Add(job.folder, snapshot.folder);
    else
        poll_.Remove(job.folder);
    if (snapshot.illegible) NoteIllegible(job.folder);

    // Links and pipes, of which no record is kept, show in the folder's time alone.
    if (snapshot.allKnown && (!job.silent || ledger_.IsNews(snapshot.folder))) ledger_.Disturbed(job.folder);
    const ReportLedger::Folders folders = ledger_.Compare(job.folder, snapshot, job.silent);
    for (const std::string& gone : folders.gone)
        LoseFolder(gone, ItemRemoved);
    PushFoldersIn(job, snapshot, folders.appeared);
}

// For instance because no descriptor is left. It is tried again.
void TreeFollower::NoteUnread(const std::string& folder) {
    if (!stop_ && !poll_.IsUnread(folder))
        KXP_LOG(KXP::LogFailure, "Folder %s cannot be read to its end, trying again",
                KXP::ToValidUtf8(folder).c_str());
    poll_.AddUnread(folder);
}

void TreeFollower::PushFoldersIn(const FolderJob& job, const FolderSnapshot& snapshot,
                                 const std::vector<std::string>& appeared) {
    const std::unordered_set<std::string> news(appeared.begin(), appeared.end());
    for (const FoundItem& entry : snapshot.entries) {
        if (entry.item.kind != ItemKind::Folder) continue;
        const std::string path = job.folder + "/" + entry.name;
        const bool isNew = news.count(path) > 0;
        if (job.deep || isNew) jobs_.Push({path, job.silent && !isNew});
    }
}

void TreeFollower::NoteLeftOut(const std::string& folder) {
    if (!tree_.inotify().IsOpen() || std::exchange(logged_.leftOut, true)) return;
    KXP_LOG(KXP::LogFailure, "No more watches to be had for %s and other folders: %s",
            KXP::ToValidUtf8(folder).c_str(), std::strerror(errno));
}

void TreeFollower::NoteIllegible(const std::string& folder) {
    if (std::exchange(logged_.illegible, true)) return;
    KXP_LOG(KXP::LogFailure, "Passed over names in %s that are not UTF-8", KXP::ToValidUtf8(folder).c_str());
}

void TreeFollower::AppearFolder(const std::string& path, uint32_t flag) {
    // Watches under this path belong to a folder that was here before and may have moved.
    tree_.UnwatchWithBeneath(path);
    ledger_.FolderAppeared(path, flag);
    if (!ledger_.IsInGallery(path)) return;
    if (path == gallery_.path) {
        gallery_.seen = gallery_.Look().value_or(Identity{});
        WatchParents();
    }
    jobs_.Push({path});
}

void TreeFollower::LoseFolder(const std::string& path, uint32_t flag) {
    tree_.UnwatchWithBeneath(path);
    poll_.RemoveWithBeneath(path);
    ledger_.FolderGone(path, flag);
    if (path == gallery_.path) gallery_.seen = {};
}

void TreeFollower::PollFolders(TimePoint now) {
    if (!poll_.InRound() && now >= pollDue_ && !poll_.IsEmpty()) poll_.StartRound();
    if (!poll_.InRound()) return;
    for (const std::string& folder : poll_.CheckNext(kFoldersPerPoll)) {
        if (IsParent(folder)) {
            ledger_.Disturbed(root_.path);
            WatchParent(folder);
        } else {
            // Folders in one that could not be read may not be watched yet.
            jobs_.Push({folder, false, poll_.IsUnread(folder)});
        }
    }
    if (poll_.InRound()) return;
    pollDue_ = now + (onNetwork_ ? options_.networkPollInterval : options_.pollInterval);
}

void TreeFollower::DoDueWork() {
    const TimePoint now = steady_clock::now();
    // Not before the current comparison has ended: under a steady flood of events none would ever finish.
    if (eventsLost_ && jobs_.IsEmpty()) Recover();
    if (now >= rootsDue_) CheckRoots();
    PollFolders(now);
    ledger_.LookAgain(now);
    RunJobs(now + kWorkSlice);
}

void TreeFollower::PollNow() {
    if (!poll_.IsEmpty() && !poll_.InRound()) poll_.StartRound();
}

bool TreeFollower::HasCaughtUp() const {
    return readAll_ && !eventsLost_ && jobs_.IsEmpty() && !poll_.InRound();
}

void TreeFollower::AddUnreported(UnreportedPaths& paths) const {
    ledger_.AddUnreported(paths);
    for (std::string& folder : poll_.Unread())
        paths.incomplete.push_back(std::move(folder));
    paths.exact = poll_.IsEmpty() && gallery_.seen.exists;
}

TimePoint TreeFollower::NextDue() const {
    if (eventsLost_ || poll_.InRound() || !jobs_.IsEmpty()) return {};
    const TimePoint due = std::min(rootsDue_, ledger_.NextLook());
    return poll_.IsEmpty() ? due : std::min(due, pollDue_);
}

}  // namespace watcher
