// One pass over the entries of a folder, in its own order, without a list of them in memory. Links count as
// what they lead to; nothing is opened, so that no pipe or device can block. Names that are not UTF-8 are
// passed over, which is logged once at the end.
#pragma once

#include <memory>
#include <string>

#include <dirent.h>

namespace KXP {

enum class EntryKind {
    Folder,
    Other,
    Unreachable,  // a link to nowhere, or an entry that is gone
};

class FolderReader {
  public:
    // A folder that cannot be opened has no entries.
    explicit FolderReader(const std::string& path);

    // Steps to the next entry, past "." and "..". False at the end.
    bool Next();

    // The entry stepped to.
    const char* Name() const { return entry_->d_name; }
    EntryKind Kind() const;

  private:
    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    const std::string path_;
    std::unique_ptr<DIR, Close> folder_;
    const dirent* entry_ = nullptr;
    int illegible_ = 0;
};

}  // namespace KXP
