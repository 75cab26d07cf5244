// The two folders that users name, the watched one and the gallery, and the folders around the gallery: how
// they are watched from the start, and what happens when they go, come back, or are others than before.
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>
#include <unordered_set>
#include <utility>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

namespace watcher {

// Watches each folder that the walk enters, and takes in what is found there. A failure here does not end the
// walk, which serves another purpose too: the disk is compared later.
class TreeFollower::Learner : public KXP::IFolderVisitor {
  public:
    explicit Learner(TreeFollower& follower) : follower_(follower) {}

    void Enter(const std::string& folder) override {
        Try([&] {
            snapshot_ = {};
            folder_ = folder;
            watched_ = follower_.WatchFolder(folder);
        });
    }
    void Found(const char* name, bool isLink, const struct stat& status) override {
        if (!isLink) Try([&] { snapshot_.Add(name, ItemOf(status)); });
    }
    void Leave(const struct stat& status) override {
        if (watched_ == Watched::Gone) return;
        snapshot_.folder = ItemOf(status);
        Try([&] {
            follower_.TakeIn({folder_, true}, watched_, snapshot_);
            learnt_.insert(folder_);
        });
    }
    const std::unordered_set<std::string>& learnt() const { return learnt_; }

  private:
    template <typename Step>
    void Try(const Step& step) {
        if (failed_) return;
        try {
            step();
        } catch (const std::exception& error) {
            KXP_LOG(KXP::LogFailure, "File watcher failed: %s", error.what());
            failed_ = true;
            follower_.DistrustEvents();
        }
    }

    TreeFollower& follower_;
    bool failed_ = false;
    std::string folder_;
    Watched watched_ = Watched::Gone;
    FolderSnapshot snapshot_;
    std::unordered_set<std::string> learnt_;
};

void TreeFollower::Learn(const GalleryWalk& walk) {
    Learner learner(*this);
    walk(learner);
    jobs_.DropSilent(learner.learnt());
}

std::optional<TreeFollower::Identity> TreeFollower::NamedFolder::Look() const {
    const Item item = LookAt(path, true);
    if (item.kind == ItemKind::Unknown) return std::nullopt;
    return item.kind == ItemKind::Folder ? Identity{true, item.volume, item.stamp.inode} : Identity{};
}

void TreeFollower::Start() {
    root_.seen = root_.Look().value_or(Identity{});
    gallery_.seen = gallery_.Look().value_or(Identity{});
    Begin(true);
}

void TreeFollower::Begin(bool silent) {
    jobs_.Clear();
    poll_.Clear();
    ledger_.ForgetOpenFiles();
    eventsLost_ = false;
    OpenTree();
    onNetwork_ = IsOnNetwork(gallery_.path);
    rootsDue_ = std::chrono::steady_clock::now() + options_.pollInterval;
    pollDue_ = rootsDue_;
    WatchParents();
    if (!silent) ledger_.Disturbed(root_.path);
    jobs_.Push({gallery_.path, silent});
}

void TreeFollower::OpenTree() {
    if (options_.polling || tree_.Reopen()) return;
    if (!std::exchange(logged_.noEvents, true))
        KXP_LOG(KXP::LogFailure, "No file events to be had (%s), looking at folders instead",
                std::strerror(errno));
}

void TreeFollower::Recover() {
    KXP_LOG(KXP::LogFailure, "File events were lost, comparing with the disk");
    ledger_.SetNewsFrom(FileClockNs());
    CheckRoots();
    if (eventsLost_) Begin(false);
}

// Detects what no event reports: a folder further up was renamed, a volume was mounted or unmounted, or one
// of the two folders is back.
void TreeFollower::CheckRoots() {
    rootsDue_ = std::chrono::steady_clock::now() + options_.pollInterval;
    const std::optional<Identity> root = root_.Look();
    const std::optional<Identity> gallery = gallery_.Look();
    if (!root || !gallery) return;
    const bool rootChanged = *root != root_.seen;
    if (!rootChanged && !(*gallery != gallery_.seen)) return;
    if (rootChanged) {
        KXP_LOG(KXP::LogMilestone, "Watched folder %s is %s", root_.path.c_str(),
                root->exists ? "there" : "gone");
        Replace(root_, *root);
    }
    if (root_.path != gallery_.path) Replace(gallery_, *gallery);
    Begin(false);
}

void TreeFollower::Replace(NamedFolder& folder, const Identity& now) {
    if (folder.seen.exists) ledger_.FolderGone(folder.path, ItemRemoved);
    if (now.exists) ledger_.FolderAppeared(folder.path, ItemCreated);
    folder.seen = now;
}

// An entry that comes or goes in them changes the time of the gallery's "..".
void TreeFollower::WatchParents() {
    if (root_.path != gallery_.path) WatchParent(root_.path);
    const std::optional<Identity> around = NamedFolder{around_, {}}.Look();
    if (around && around->exists && *around != root_.seen) WatchParent(around_);
}

void TreeFollower::WatchParent(const std::string& folder) {
    const Watched watched = tree_.Watch(folder, false, true);
    if (watched == Watched::LeftOut) NoteLeftOut(folder);
    if (watched == Watched::Gone || (watched == Watched::Yes && !onNetwork_)) return;
    poll_.Add(folder, LookAt(folder, true));
}

bool TreeFollower::IsParent(const std::string& folder) const {
    return folder == around_ || (folder == root_.path && root_.path != gallery_.path);
}

}  // namespace watcher
