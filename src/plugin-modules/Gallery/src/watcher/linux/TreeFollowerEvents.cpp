// How the kernel's events change the tree.
#include <algorithm>
#include <array>
#include <string_view>

#include <sys/inotify.h>

#include "common/text/TextUtil.h"
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
    if (event.name.empty()) return HandleLostWatch(event, folder);
    if (!KXP::IsValidUtf8(event.name)) return NoteIllegible(folder);
    const std::string path = folder + "/" + std::string(event.name);
    (event.mask & IN_ISDIR) != 0 ? HandleFolder(path, event.mask) : HandleFile(path, event.mask);
}

void TreeFollower::HandleFolder(const std::string& path, uint32_t mask) {
    if ((mask & kComes) != 0) AppearFolder(path, FlagOf(mask));
    if ((mask & kGoes) != 0) LoseFolder(path, FlagOf(mask));
}

void TreeFollower::HandleFile(const std::string& path, uint32_t mask) {
    if ((mask & kGoes) != 0) ledger_.FileGone(path, FlagOf(mask));
    if ((mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0) ledger_.FileComplete(path, FlagOf(mask));
    if ((mask & (kGoes | IN_CLOSE_WRITE | IN_MOVED_TO)) != 0) unfinished_.erase(path);
    if ((mask & IN_CREATE) == 0) return;
    ledger_.FileNamed(path);
    if (ledger_.IsInGallery(path)) unfinished_.insert(path);
}

// The volume was unmounted, or the folder is gone, which its parent reports as well.
void TreeFollower::HandleLostWatch(const KernelEvent& event, const std::string& folder) {
    if ((event.mask & (IN_IGNORED | IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) == 0) return;
    if ((event.mask & IN_IGNORED) != 0) tree_.Forget(event.watch);
    if (IsNamed(folder)) {
        rootsDue_ = {};
    } else if ((event.mask & IN_IGNORED) != 0) {
        Push({folder, !ledger_.IsInGallery(folder)});
    }
}

}  // namespace watcher
