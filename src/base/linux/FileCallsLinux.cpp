#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"

namespace KXP::Platform {

const int kFolderForLookup = O_PATH | O_DIRECTORY;

bool MakeDurable(int fd) {
    return fdatasync(fd) == 0;
}

bool ReserveFileSpace(int fd, int64_t size) {
    int error = 0;
    do {
        error = posix_fallocate(fd, 0, size);
    } while (error == EINTR);
    errno = error;
    return error == 0;
}

bool RenameNoReplace(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
    if (renameat2(fromFolder, from.c_str(), toFolder, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // Some network volumes know the plain call alone.
    struct stat status {};
    if (fstatat(toFolder, to.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return renameat(fromFolder, from.c_str(), toFolder, to.c_str()) == 0;
}

int64_t CopyFileRange(int from, int to, uint64_t position, size_t size) {
    auto in = static_cast<off_t>(position);
    off_t out = in;
    return copy_file_range(from, &in, to, &out, size, 0);
}

}  // namespace KXP::Platform
