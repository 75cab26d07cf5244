#include "common/FolderReader.h"

#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/TextUtil.h"

namespace KXP {

FolderReader::FolderReader(const std::string& path)
    // The system would take the text before a zero byte, which is another folder.
    : path_(path), folder_(path.find('\0') == std::string::npos ? opendir(path.c_str()) : nullptr) {}

bool FolderReader::Next() {
    while (folder_ && (entry_ = readdir(folder_.get())) != nullptr) {
        const std::string_view name = entry_->d_name;
        if (name == "." || name == "..") continue;
        if (IsValidUtf8(name)) return true;
        ++illegible_;
    }
    if (illegible_ > 0)
        KXP_LOG(LogFailure, "Passed over %d names in %s that are not UTF-8", illegible_, path_.c_str());
    illegible_ = 0;
    return false;
}

EntryKind FolderReader::Kind() const {
    if (entry_->d_type == DT_DIR) return EntryKind::Folder;
    if (entry_->d_type != DT_UNKNOWN && entry_->d_type != DT_LNK) return EntryKind::Other;
    struct stat status {};
    if (fstatat(dirfd(folder_.get()), entry_->d_name, &status, 0) != 0) return EntryKind::Unreachable;
    return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

}  // namespace KXP
