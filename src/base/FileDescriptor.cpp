#include "base/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Path.h"

namespace KXP {
namespace {

int FlagsOf(Links links) {
    return links == Links::Follow ? 0 : O_NOFOLLOW;
}

FileDescriptor Open(int folder, const std::string& path, int flags, mode_t mode = 0) {
    if (!IsUsablePath(path)) {
        errno = EINVAL;
        return {};
    }
    // Without O_NONBLOCK, opening a pipe waits for its other end.
    return FileDescriptor(openat(folder, path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode));
}

FileDescriptor OpenRegular(int folder, const std::string& path, int flags, mode_t mode, struct stat& status) {
    FileDescriptor file = Open(folder, path, flags, mode);
    if (!file.IsOpen()) return file;
    const int error = fstat(file.get(), &status) == 0 ? EINVAL : errno;
    if (error == EINVAL && S_ISREG(status.st_mode)) return file;
    file.Close();
    errno = error;
    return file;
}

FileDescriptor OpenRegular(const std::string& path, int flags, mode_t mode, uint64_t* size) {
    struct stat status {};
    FileDescriptor file = OpenRegular(AT_FDCWD, path, flags, mode, status);
    if (file.IsOpen() && size) *size = static_cast<uint64_t>(status.st_size);
    return file;
}

}  // namespace

bool IsPassingError(int error) {
    return error == EIO || error == EMFILE || error == ENFILE || error == ESTALE || error == ENOMEM;
}

bool FileDescriptor::Close() {
    if (fd_ < 0) return true;
    // Not retried: after EINTR the descriptor is gone and its number may be another thread's.
    return close(std::exchange(fd_, -1)) == 0 || errno == EINTR;
}

FileDescriptor OpenForRead(const std::string& path, uint64_t* size) {
    return OpenRegular(path, O_RDONLY, 0, size);
}

FileDescriptor OpenForRead(const std::string& path, struct stat& status, Links links) {
    return OpenRegular(AT_FDCWD, path, O_RDONLY | FlagsOf(links), 0, status);
}

FileDescriptor OpenForReadAt(int folder, const std::string& name, struct stat& status, Links links) {
    return OpenRegular(folder, name, O_RDONLY | FlagsOf(links), 0, status);
}

FileDescriptor OpenForWrite(const std::string& path, unsigned mode, uint64_t* size) {
    return OpenRegular(path, O_WRONLY | O_CREAT, static_cast<mode_t>(mode), size);
}

FileDescriptor OpenForUpdate(const std::string& path, uint64_t* size) {
    return OpenRegular(path, O_RDWR, 0, size);
}

FileDescriptor OpenFolder(const std::string& path, Links links) {
    return Open(AT_FDCWD, path, O_RDONLY | O_DIRECTORY | FlagsOf(links));
}

FileDescriptor OpenFolderAt(const FileDescriptor& folder, const std::string& name) {
    return Open(folder.get(), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
}

}  // namespace KXP
