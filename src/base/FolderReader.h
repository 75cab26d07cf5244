// One pass over the entries of a folder, in its own order, without a list of them in memory. Entries are not
// opened, so no pipe or device can block. Belongs to one thread.
#pragma once

#include <string>

#include "base/FileDescriptor.h"
#include "base/FolderEntries.h"

namespace KXP {

enum class EntryKind {
    Folder,
    Other,
    Unreachable,  // a link to nowhere, or an entry that is gone
};

class FolderReader {
  public:
    // A folder that cannot be opened has no entries; errno is then set.
    explicit FolderReader(const std::string& path, Links links = Links::Follow);
    explicit FolderReader(FileDescriptor folder);

    bool IsOpen() const { return folder_.IsOpen(); }
    // Of the folder; the reader keeps it.
    int descriptor() const { return folder_.descriptor(); }

    // Steps to the next entry; false at the end. Passes over "." and ".." and over names that are not UTF-8,
    // which it counts.
    bool Next();
    // The same without passing over anything.
    bool NextOfAll();

    // Why the end came: 0, or the errno of a read that failed. The entries so far are then not all.
    int error() const { return error_; }
    int illegible() const { return illegible_; }

    // Of the entry stepped to. Kind is that of a link's target.
    const char* Name() const { return entry_->d_name; }
    EntryKind Kind() const;
    // Whether the folder itself says that it is a regular file; some file systems say nothing.
    bool IsKnownRegularFile() const { return entry_->d_type == DT_REG; }
    // A folder itself, and no link to one.
    bool IsFolder() const;
    bool IsLink() const;
    // All that the system knows of it, or of a link's target. False with errno set.
    bool Look(struct stat& status, Links links) const;

  private:
    Platform::FolderEntries folder_;
    const dirent* entry_ = nullptr;
    int error_ = 0;
    int illegible_ = 0;
};

}  // namespace KXP
