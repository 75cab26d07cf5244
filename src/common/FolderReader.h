// One pass over the entries of a folder, in its own order, without a list of them in memory. Links count as
// what they lead to; nothing is opened, so that no pipe or device can block.
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
    explicit FolderReader(const std::string& path) : folder_(opendir(path.c_str())) {}

    // False when the folder could not be opened; it then has no entries.
    bool IsOpen() const { return folder_ != nullptr; }

    // Steps to the next entry, past "." and "..". False at the end.
    bool Next();

    // The entry stepped to. Its name is bytes: it need not be UTF-8.
    const char* Name() const { return entry_->d_name; }
    EntryKind Kind() const;

  private:
    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::unique_ptr<DIR, Close> folder_;
    const dirent* entry_ = nullptr;
};

}  // namespace KXP
