#include "plugin-modules/Gallery/src/watcher/linux/Inotify.h"

#include <cstring>

#include <sys/inotify.h>

namespace watcher {

bool NextKernelEvent(std::string_view& bytes, KernelEvent& event) {
    inotify_event head{};
    if (bytes.size() < sizeof head) return false;
    std::memcpy(&head, bytes.data(), sizeof head);
    if (head.len > bytes.size() - sizeof head) return false;
    // The name is padded with zero bytes and may be missing.
    const std::string_view name = bytes.substr(sizeof head, head.len);
    event = {head.wd, head.mask, name.substr(0, name.find('\0'))};
    bytes.remove_prefix(sizeof head + head.len);
    return true;
}

bool Inotify::Open() {
    file_ = KXP::FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    return file_.IsOpen();
}

int Inotify::Watch(const std::string& folder, bool writes, bool named) {
    uint32_t mask = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE | IN_ATTRIB;
    // Without events of files that are removed and still written to.
    mask |= IN_ONLYDIR | IN_EXCL_UNLINK;
    if (writes) mask |= IN_MODIFY;
    mask |= named ? IN_DELETE_SELF | IN_MOVE_SELF : IN_DONT_FOLLOW;
    return inotify_add_watch(file_.get(), folder.empty() ? "/" : folder.c_str(), mask);
}

void Inotify::Unwatch(int watch) {
    inotify_rm_watch(file_.get(), watch);
}

size_t Inotify::Read(char* buffer, size_t size) {
    const long got = KXP::ReadSome(file_, buffer, size);
    return got > 0 ? static_cast<size_t>(got) : 0;
}

}  // namespace watcher
