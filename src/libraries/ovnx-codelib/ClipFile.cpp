#include "libraries/ovnx-codelib/ClipFile.h"

#include <cerrno>
#include <cstdio>
#include <random>

#include <fcntl.h>
#include <unistd.h>

#include "common/System.h"

namespace codelib {
namespace {

std::string TemporaryName() {
    std::random_device random;
    char name[32];
    std::snprintf(name, sizeof(name), ".clip-%08x%08x.part", random(), random());
    return name;
}

}  // namespace

ClipFile::~ClipFile() {
    if (!temporaryName_.empty()) unlinkat(folder_.get(), temporaryName_.c_str(), 0);
}

bool ClipFile::Create(const std::string& path, mode_t mode) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    name_ = slash == std::string::npos ? path : path.substr(slash + 1);
    folder_ = KXP::FileDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_.IsOpen()) return false;
    struct stat older {};
    const bool isThere = fstatat(folder_.get(), name_.c_str(), &older, AT_SYMLINK_NOFOLLOW) == 0;
    if (isThere && !S_ISREG(older.st_mode)) errno = EINVAL;
    if (isThere ? !S_ISREG(older.st_mode) : errno != ENOENT) return false;
    // Without a name it is gone with a process that ends meanwhile.
    file_ = KXP::FileDescriptor(KXP::Platform::OpenNameless(folder_.get(), mode));
    if (file_.IsOpen()) return true;
    const std::string temporary = TemporaryName();
    file_ = KXP::FileDescriptor(
        openat(folder_.get(), temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (file_.IsOpen()) temporaryName_ = temporary;
    return file_.IsOpen();
}

bool ClipFile::Replaces(const struct stat& other) const {
    struct stat older {};
    return fstatat(folder_.get(), name_.c_str(), &older, AT_SYMLINK_NOFOLLOW) == 0 &&
           older.st_dev == other.st_dev && older.st_ino == other.st_ino;
}

bool ClipFile::Commit() {
    if (fsync(file_.get()) != 0) return false;
    if (temporaryName_.empty()) {
        const std::string temporary = TemporaryName();
        if (!KXP::Platform::GiveName(file_.get(), folder_.get(), temporary)) return false;
        temporaryName_ = temporary;
    }
    if (!file_.Close()) return false;
    if (renameat(folder_.get(), temporaryName_.c_str(), folder_.get(), name_.c_str()) != 0) return false;
    temporaryName_.clear();
    // Not every file system can do so; the clip is whole and in its place in any case.
    fsync(folder_.get());
    return true;
}

}  // namespace codelib
