#include "base/NewFile.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/NamelessFile.h"
#include "base/PartFiles.h"
#include "base/Path.h"

namespace KXP {
namespace {

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
    if (readable.IsOpen()) (void)Platform::MakeNamesDurable(readable.get());
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
    CreateHidden(mode);
}

void NewFile::CreateHidden(unsigned mode) {
    std::string hidden = NewPartName();
    note_ = NotePart(folder_, hidden);
    file_ =
        FileDescriptor(openat(folder_.get(), hidden.c_str(),
                              O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, static_cast<mode_t>(mode)));
    // Moved, because a copy may find no memory, and the file would then stay.
    if (file_.IsOpen()) hidden_ = std::move(hidden);
}

bool NewFile::GiveHiddenName() {
    std::string hidden = NewPartName();
    note_ = NotePart(folder_, hidden);
    if (!Platform::GiveName(file_.get(), folder_.get(), hidden)) return false;
    hidden_ = std::move(hidden);
    return true;
}

bool NewFile::LookAtPlace(struct stat& status) const {
    return fstatat(folder_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool NewFile::Put(const std::string& name, bool replace, Durability durability) {
    if (durability != Durability::None && !Platform::MakeDurable(file_.get())) return false;
    if (hidden_.empty() && !GiveHiddenName()) return false;
    if (!file_.Close()) return false;
    const bool put = replace ? renameat(folder_.get(), hidden_.c_str(), folder_.get(), name.c_str()) == 0
                             : Platform::RenameNoReplace(folder_.get(), hidden_, folder_.get(), name);
    if (!put) return false;
    hidden_.clear();
    note_.reset();
    if (durability == Durability::ContentAndName) MakeNameDurable(folder_);
    return true;
}

// A hidden name and its note cost as much as a small file.
bool NewFile::LinkNew(const std::string& name) {
    if (!hidden_.empty()) return Put(name, false, Durability::None);
    return Platform::GiveName(file_.get(), folder_.get(), name) && file_.Close();
}

}  // namespace KXP
