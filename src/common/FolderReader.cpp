#include "common/FolderReader.h"

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

namespace KXP {

bool FolderReader::Next() {
    if (!folder_) return false;
    do {
        entry_ = readdir(folder_.get());
    } while (entry_ && (std::strcmp(entry_->d_name, ".") == 0 || std::strcmp(entry_->d_name, "..") == 0));
    return entry_ != nullptr;
}

EntryKind FolderReader::Kind() const {
    if (entry_->d_type == DT_DIR) return EntryKind::Folder;
    if (entry_->d_type != DT_UNKNOWN && entry_->d_type != DT_LNK) return EntryKind::Other;
    struct stat status {};
    if (fstatat(dirfd(folder_.get()), entry_->d_name, &status, 0) != 0) return EntryKind::Unreachable;
    return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

}  // namespace KXP
