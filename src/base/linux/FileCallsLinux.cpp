#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <iterator>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"

namespace KXP::Platform {
namespace {

// The types of volumes, from statfs(2) and the kernel's sources, that number files as they come across them.
constexpr unsigned kNumbersAnew[] = {
    0x4D44,      // FAT
    0x2011BAB0,  // exFAT
    0x65735546,  // FUSE
    0x5346544E,  // NTFS
    0x7366746E,  // NTFS, the newer driver
    0x517B,      // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB2
};

}  // namespace

const int kFolderForLookup = O_PATH | O_DIRECTORY;

int OpenBeneath(int folder, const std::string& path, int flags) {
    open_how how{};
    how.flags = static_cast<uint64_t>(flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how));
}

std::string PathOf(int fd) {
    char path[PATH_MAX];
    const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, sizeof path);
    // A text that fills the buffer may be cut off.
    if (size <= 0 || size == ssize_t{sizeof path} || path[0] != '/') return {};
    return {path, static_cast<size_t>(size)};
}

bool IsKnownFolder(const std::string& path) {
    open_how how{};
    how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_CACHED;
    // Kernels before 5.12 refuse this, and so do some sandboxes.
    return FileDescriptor(static_cast<int>(syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)))
        .IsOpen();
}

timespec ModifiedTime(const struct stat& status) {
    return status.st_mtim;
}

timespec ChangedTime(const struct stat& status) {
    return status.st_ctim;
}

int64_t ModifiedNs(const struct stat& status) {
    return static_cast<int64_t>(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

bool KeepsInodes(const std::string& path) {
    struct statfs volume {};
    if (statfs(path.c_str(), &volume) != 0) return false;
    const auto type = static_cast<unsigned>(volume.f_type);
    return std::find(std::begin(kNumbersAnew), std::end(kNumbersAnew), type) == std::end(kNumbersAnew);
}

bool MakeDurable(int fd) {
    return fdatasync(fd) == 0;
}

bool MakeVolumeDurable(int fd) {
    return syncfs(fd) == 0;
}

bool MakeNamesDurable(int folder) {
    return fsync(folder) == 0;
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

int64_t CopyFileRange(int from, uint64_t position, int to, uint64_t target, size_t size) {
    auto in = static_cast<off_t>(position);
    auto out = static_cast<off_t>(target);
    return copy_file_range(from, &in, to, &out, size, 0);
}

void StartReading(int fd, uint64_t size) {
    (void)posix_fadvise(fd, 0, static_cast<off_t>(size), POSIX_FADV_WILLNEED);
}

void StartWriteback(int fd) {
    (void)sync_file_range(fd, 0, 0, SYNC_FILE_RANGE_WRITE);
}

bool IsOpenForWriting(int fd) {
    // A lease to read is granted only when nobody writes.
    if (fcntl(fd, F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN;
    (void)fcntl(fd, F_SETLEASE, F_UNLCK);
    return false;
}

}  // namespace KXP::Platform
