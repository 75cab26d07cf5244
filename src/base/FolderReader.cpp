#include "base/FolderReader.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/Text.h"

namespace KXP {

FolderReader::FolderReader(const std::string& path, Links links) : FolderReader(OpenFolder(path, links)) {}

FolderReader::FolderReader(FileDescriptor folder) : folder_(std::move(folder)) {}

bool FolderReader::Next() {
    while (NextOfAll()) {
        const std::string_view name = entry_->d_name;
        if (name == "." || name == "..") continue;
        if (IsValidUtf8(name)) return true;
        ++illegible_;
    }
    return false;
}

bool FolderReader::NextOfAll() {
    if (!IsOpen()) return false;
    entry_ = folder_.Next();
    if (!entry_) error_ = errno;
    return entry_ != nullptr;
}

EntryKind FolderReader::Kind() const {
    if (entry_->d_type == DT_DIR) return EntryKind::Folder;
    if (entry_->d_type != DT_UNKNOWN && entry_->d_type != DT_LNK) return EntryKind::Other;
    struct stat status {};
    if (!Look(status, Links::Follow)) return EntryKind::Unreachable;
    return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

bool FolderReader::IsFolder() const {
    if (entry_->d_type != DT_UNKNOWN) return entry_->d_type == DT_DIR;
    struct stat status {};
    return Look(status, Links::Refuse) && S_ISDIR(status.st_mode);
}

bool FolderReader::IsLink() const {
    if (entry_->d_type != DT_UNKNOWN) return entry_->d_type == DT_LNK;
    struct stat status {};
    return Look(status, Links::Refuse) && S_ISLNK(status.st_mode);
}

bool FolderReader::Look(struct stat& status, Links links) const {
    const int flags = links == Links::Follow ? 0 : AT_SYMLINK_NOFOLLOW;
    return fstatat(descriptor(), entry_->d_name, &status, flags) == 0;
}

}  // namespace KXP
