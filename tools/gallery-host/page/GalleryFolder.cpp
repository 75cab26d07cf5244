#include "gallery-host/page/GalleryFolder.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "base/FileCalls.h"

namespace host::page {

KXP::FileDescriptor OpenBeneath(const std::string& folder, const std::string& path, struct stat& status) {
    const bool below = !folder.empty() && path.size() > folder.size() + 1 &&
                       path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/' &&
                       path.find('\0') == std::string::npos;
    if (!below) {
        errno = EXDEV;
        return {};
    }
    const KXP::FileDescriptor root(open(folder.c_str(), KXP::Platform::kFolderForLookup | O_CLOEXEC));
    if (!root.IsOpen()) return {};
    // Opening a pipe would wait for its other end.
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    KXP::FileDescriptor file(KXP::Platform::OpenBeneath(root.get(), path.substr(folder.size() + 1), kFlags));
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
