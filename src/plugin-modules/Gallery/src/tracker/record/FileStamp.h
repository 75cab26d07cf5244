// By this a file is recognised as unchanged since it was inspected.
#pragma once

#include <cstdint>
#include <string>

#include <sys/stat.h>

#include "base/FileCalls.h"

struct FileStamp {
    uint64_t size = 0;
    int64_t modifiedNs = 0;  // since 1970
    uint64_t inode = 0;      // some volumes number their files anew with each mount

    bool operator==(const FileStamp& other) const { return SameContent(other) && inode == other.inode; }
    bool operator!=(const FileStamp& other) const { return !(*this == other); }
    // Without the inode: a copy that keeps the time of its source matches too.
    bool SameContent(const FileStamp& other) const {
        return size == other.size && modifiedNs == other.modifiedNs;
    }
    // A record from a file without stamps has none.
    bool IsKnown() const { return *this != FileStamp{}; }
};

inline FileStamp StampOf(const struct stat& status) {
    return {static_cast<uint64_t>(status.st_size), KXP::Platform::ModifiedNs(status), status.st_ino};
}

// Unknown where the file cannot be looked at.
inline FileStamp StampAt(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? StampOf(status) : FileStamp{};
}
