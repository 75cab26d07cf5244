// The two folders that users name, the watched one and the gallery, and the folders around the gallery: how
// they are watched from the start, and what happens when they go, come back, or are others than before.
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "CobalixUtil.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

namespace watcher {
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
