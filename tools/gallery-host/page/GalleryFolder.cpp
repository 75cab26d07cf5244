#include "gallery-host/page/GalleryFolder.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace host::page {
namespace {

// Fails instead of leaving `folder` or following a link, whatever happens to the names meanwhile.
KXP::FileDescriptor OpenStrictly(const KXP::FileDescriptor& folder, const char* name) {
    struct open_how how {};
    // Opening a pipe would wait for its other end.
    how.flags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return KXP::FileDescriptor(static_cast<int>(syscall(SYS_openat2, folder.get(), name, &how, sizeof how)));
}

}  // namespace

KXP::FileDescriptor OpenBeneath(const std::string& folder, const std::string& path, struct stat& status) {
    const bool below = !folder.empty() && path.size() > folder.size() + 1 &&
                       path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/' &&
                       path.find('\0') == std::string::npos;
    if (!below) {
        errno = EXDEV;
        return {};
    }
    const KXP::FileDescriptor root(open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!root.IsOpen()) return {};
    KXP::FileDescriptor file = OpenStrictly(root, path.c_str() + folder.size() + 1);
    if (!file.IsOpen()) return {};
    if (fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) return file;
    errno = EINVAL;
    return {};
}

void GalleryFolder::Set(const std::string& path) {
    std::string trimmed = path;
    while (trimmed.size() > 1 && trimmed.back() == '/')
        trimmed.pop_back();
    const KXP::MutexLock lock(mutex_);
    path_ = std::move(trimmed);
}

std::string GalleryFolder::path() const {
    const KXP::MutexLock lock(mutex_);
    return path_;
}

KXP::FileDescriptor GalleryFolder::Open(const std::string& path, struct stat& status) const {
    return OpenBeneath(this->path(), path, status);
}

}  // namespace host::page
