#include <cerrno>
#include <cstdio>

#include <sys/stat.h>

#include "common/System.h"

namespace KXP::Platform {

bool RenameNoReplace(const std::string& from, const std::string& to) {
    if (renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) return true;
    if (errno != ENOTSUP && errno != EINVAL) return false;
    // Some volumes know the plain call alone.
    struct stat status {};
    if (lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from.c_str(), to.c_str()) == 0;
}

int64_t CopyFileRange(int, int, uint64_t, size_t) {
    // The system clones whole files by name, which cannot be stopped half-way.
    errno = ENOTSUP;
    return -1;
}

}  // namespace KXP::Platform
