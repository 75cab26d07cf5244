// How the kernel's events change the tree.
#include <algorithm>
#include <array>
#include <string_view>

#include <sys/inotify.h>

#include "base/Text.h"
#include "plugin-modules/Gallery/src/watcher/linux/TreeFollower.h"

namespace watcher {
namespace {

constexpr size_t kReadSize = 65536;
constexpr uint32_t kComes = IN_CREATE | IN_MOVED_TO;
constexpr uint32_t kGoes = IN_DELETE | IN_MOVED_FROM;

uint32_t FlagOf(uint32_t mask) {
    if ((mask & (IN_MOVED_FROM | IN_MOVED_TO)) != 0) return ItemRenamed;
    if ((mask & IN_DELETE) != 0) return ItemRemoved;
    return (mask & IN_CREATE) != 0 ? ItemCreated : ItemModified;
}

}  // namespace

void TreeFollower::ReadEvents() {
    std::array<char, kReadSize> buffer;
    const size_t size = tree_.inotify().IsOpen() ? tree_.inotify().Read(buffer.data(), buffer.size()) : 0;
    readAll_ = size == 0;
    std::string_view bytes(buffer.data(), size);
    KernelEvent event;
    while (!stop_ && NextKernelEvent(bytes, event))
        Handle(event);
    // The rest cannot be parsed; a comparison with the disk finds what it reported.
    if (!stop_ && !bytes.empty()) eventsLost_ = true;
}

void TreeFollower::Handle(const KernelEvent& event) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) eventsLost_ = true;
    const std::string* watched = tree_.FolderOf(event.watch);
    if (!watched) return;
    const std::string folder = *watched;
    if (folder == around_) return HandleAround(event);
    if (event.name.empty()) return HandleSelf(event, folder);
    if (!KXP::IsValidUtf8(event.name)) NoteIllegible(folder);
    const std::string path = folder + "/" + std::string(event.name);
    (event.mask & IN_ISDIR) != 0 ? HandleFolder(path, event.mask) : HandleFile(path, event.mask);
}

// Only the time of that folder is of interest.
void TreeFollower::HandleAround(const KernelEvent& event) {
    const bool touched = event.name.empty() && (event.mask & IN_ATTRIB) != 0;
    if (touched || (event.mask & (kComes | kGoes)) != 0) ledger_.Disturbed(root_.path);
    if ((event.mask & IN_IGNORED) != 0) tree_.Forget(event.watch);
}

void TreeFollower::HandleFolder(const std::string& path, uint32_t mask) {
    if ((mask & kComes) != 0) AppearFolder(path, FlagOf(mask));
    if ((mask & kGoes) != 0) LoseFolder(path, FlagOf(mask));
    if ((mask & IN_ATTRIB) != 0) HandleTouchedFolder(path);
}

void TreeFollower::HandleFile(const std::string& path, uint32_t mask) {
    // One of the two folders may be a link.
    if (IsNamed(path)) {
        rootsDue_ = {};
        return ledger_.Disturbed(path);
    }
    if ((mask & kGoes) != 0) ledger_.FileGone(path, FlagOf(mask));
    if ((mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0) ledger_.FileComplete(path, FlagOf(mask));
    if ((mask & IN_CREATE) != 0) ledger_.FileNamed(path);
    if (!ledger_.IsInGallery(path)) return;
    if ((mask & IN_MODIFY) != 0) ledger_.FileWritten(path);
    if ((mask & IN_ATTRIB) != 0) ledger_.FileTouched(path);
}

// An event of the folder itself, which its parent, if that is watched, reports as well.
void TreeFollower::HandleSelf(const KernelEvent& event, const std::string& folder) {
    if ((event.mask & IN_ATTRIB) != 0) HandleTouchedFolder(folder);
    if (IsNamed(folder) && (event.mask & (IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) != 0) rootsDue_ = {};
    if ((event.mask & IN_IGNORED) == 0) return;
    tree_.Forget(event.watch);
    HandleLostWatch(folder);
}

// Its permissions may let it be read now.
void TreeFollower::HandleTouchedFolder(const std::string& path) {
    if (path != root_.path && !ledger_.IsInGallery(path)) return;
    ledger_.Disturbed(path);
    if (poll_.IsUnread(path)) jobs_.Push({path});
}

// The volume was unmounted, or the folder is gone.
void TreeFollower::HandleLostWatch(const std::string& folder) {
    if (!IsNamed(folder)) return jobs_.Push({folder});
    rootsDue_ = {};
    // It has to be watched anew even if the same folder is back by then.
    for (NamedFolder* named : {&root_, &gallery_}) {
        if (named->path == folder && named->seen.exists) named->seen = {true, 0, 0};
    }
}

}  // namespace watcher
