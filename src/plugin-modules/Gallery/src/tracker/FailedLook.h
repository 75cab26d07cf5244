// A failed look at a file is no absence: the disk may be slow, the process out of descriptors, a folder shut
// for a moment.
#pragma once

#include <cerrno>
#include <string>

#include <sys/stat.h>

// Whether the error says that nothing is at the path.
inline bool MeansGone(int error) {
    return error == ENOENT || error == ENOTDIR;
}

// Whether there is certainly no file at the path, links to nowhere aside.
inline bool IsGone(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? S_ISDIR(status.st_mode) : MeansGone(errno);
}
