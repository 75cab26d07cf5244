#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/System.h"

namespace KXP::Platform {

bool RenameNoReplace(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // Some network volumes know the plain call alone.
    struct stat status {};
    if (lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
}

int64_t CopyFileRange(int from, int to, uint64_t position, size_t size) {
    auto in = static_cast<off_t>(position);
    off_t out = in;
    return copy_file_range(from, &in, to, &out, size, 0);
}

}  // namespace KXP::Platform
