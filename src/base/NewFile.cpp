#include "base/NewFile.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/NamelessFile.h"
#include "base/Path.h"
#include "base/RandomName.h"

namespace KXP {
namespace {

// The length does not depend on the file's own name, which may be as long as names can be. The ending keeps
// everybody from taking it for what the file will be.
std::string HiddenName() {
    return "." + RandomName() + ".part";
}

FileDescriptor OpenParent(const std::string& place) {
    if (!IsUsablePath(place)) {
        errno = EINVAL;
        return {};
    }
    return FileDescriptor(open(ParentOf(place).c_str(), Platform::kFolderForLookup | O_CLOEXEC));
}

// Not every volume can do it; the file is whole and in its place in any case.
void MakeNameDurable(const FileDescriptor& folder) {
    const FileDescriptor readable(openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (readable.IsOpen()) (void)fsync(readable.get());
}

}  // namespace

NewFile::NewFile(const std::string& place, unsigned mode) : NewFile(OpenParent(place), NameOf(place), mode) {}

NewFile::NewFile(FileDescriptor folder, std::string name, unsigned mode)
    : folder_(std::move(folder)), name_(std::move(name)) {
    if (folder_.IsOpen()) Create(mode);
}

NewFile::~NewFile() {
    if (!hidden_.empty()) (void)unlinkat(folder_.get(), hidden_.c_str(), 0);
}

void NewFile::Create(unsigned mode) {
    if (name_.empty() || !IsUsablePath(name_)) {
        errno = EINVAL;
        return;
    }
    file_ = FileDescriptor(Platform::OpenNameless(folder_.get(), mode));
    if (file_.IsOpen()) return;
    const std::string hidden = HiddenName();
    file_ =
        FileDescriptor(openat(folder_.get(), hidden.c_str(),
                              O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, static_cast<mode_t>(mode)));
    if (file_.IsOpen()) hidden_ = hidden;
}

bool NewFile::LookAtPlace(struct stat& status) const {
    return fstatat(folder_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool NewFile::Put(bool replace, Durability durability) {
    if (durability != Durability::None && !Platform::MakeDurable(file_.get())) return false;
    if (hidden_.empty()) {
        const std::string hidden = HiddenName();
        if (!Platform::GiveName(file_.get(), folder_.get(), hidden)) return false;
        hidden_ = hidden;
    }
    if (!file_.Close()) return false;
    const bool put = replace ? renameat(folder_.get(), hidden_.c_str(), folder_.get(), name_.c_str()) == 0
                             : Platform::RenameNoReplace(folder_.get(), hidden_, folder_.get(), name_);
    if (!put) return false;
    hidden_.clear();
    if (durability == Durability::ContentAndName) MakeNameDurable(folder_);
    return true;
}

}  // namespace KXP
