#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <string_view>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"

namespace KXP::Platform {

const int kFolderForLookup = O_SEARCH;

int OpenBeneath(int folder, const std::string& path, int flags) {
    const bool leaves =
        path.empty() || path[0] == '/' || ("/" + path + "/").find("/../") != std::string::npos;
    if (!leaves) return openat(folder, path.c_str(), flags | O_NOFOLLOW_ANY);
    errno = EXDEV;
    return -1;
}

std::string PathOf(int fd) {
    char path[MAXPATHLEN];
    return fcntl(fd, F_GETPATH, path) == 0 ? path : "";
}

bool IsKnownFolder(const std::string&) {
    return false;
}

timespec ModifiedTime(const struct stat& status) {
    return status.st_mtimespec;
}

timespec ChangedTime(const struct stat& status) {
    return status.st_ctimespec;
}

int64_t ModifiedNs(const struct stat& status) {
    return static_cast<int64_t>(status.st_mtimespec.tv_sec) * 1000000000 + status.st_mtimespec.tv_nsec;
}

bool KeepsInodes(const std::string& path) {
    struct statfs volume {};
    if (statfs(path.c_str(), &volume) != 0) return false;
    const std::string_view type = volume.f_fstypename;
    return type == "apfs" || type == "hfs";
}

// fsync leaves it in the drive's own memory.
bool MakeDurable(int fd) {
    return fcntl(fd, F_FULLFSYNC) == 0 || fsync(fd) == 0;
}

bool MakeVolumeDurable(int fd) {
    // The system writes all, and then the drive.
    sync();
    return MakeDurable(fd);
}

bool MakeNamesDurable(int folder) {
    return MakeDurable(folder);
}

bool ReserveFileSpace(int fd, int64_t size) {
    struct stat status {};
    if (fstat(fd, &status) != 0) return false;
    if (size <= status.st_size) return true;
    fstore_t store{};
    store.fst_flags = F_ALLOCATEALL;
    store.fst_posmode = F_PEOFPOSMODE;
    store.fst_length = size - status.st_size;
    // A volume that cannot reserve says so, and is written without.
    if (fcntl(fd, F_PREALLOCATE, &store) != 0 && errno != ENOTSUP) return false;
    return ftruncate(fd, size) == 0;
}

bool RenameNoReplace(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
    if (renameatx_np(fromFolder, from.c_str(), toFolder, to.c_str(), RENAME_EXCL) == 0) return true;
    if (errno != ENOTSUP && errno != EINVAL) return false;
    // Some volumes know the plain call alone.
    struct stat status {};
    if (fstatat(toFolder, to.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return renameat(fromFolder, from.c_str(), toFolder, to.c_str()) == 0;
}

int64_t CopyFileRange(int, uint64_t, int, uint64_t, size_t) {
    // The system clones whole files by name, which cannot be stopped half-way.
    errno = ENOTSUP;
    return -1;
}

void StartReading(int fd, uint64_t size) {
    radvisory start{0, static_cast<int>(std::min<uint64_t>(size, INT_MAX))};
    (void)fcntl(fd, F_RDADVISE, &start);
}

void StartWriteback(int) {}

bool IsOpenForWriting(int) {
    return false;
}

}  // namespace KXP::Platform
