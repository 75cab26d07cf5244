// Read access to a regular file, for code that inspects files it knows nothing of: opening never blocks,
// pipes, devices and folders are never read, and a read costs one system call.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <sys/stat.h>

#include "base/ReadWrite.h"

namespace KXP {

// Not for sharing between threads.
class ifstream {
  public:
    // False, with nothing held, when the path cannot be opened or is no regular file.
    bool open(const std::string& path, Links links = Links::Follow) {
        return Take(OpenForRead(path, status_, links));
    }
    // The same for a name in the folder that the descriptor `folder` is of.
    bool open(int folder, const std::string& name) {
        return Take(OpenForReadAt(folder, name, status_, Links::Follow));
    }
    // The errno of the opening or the first read that failed; 0 when none has. EINVAL and ELOOP say that the
    // path is that of no regular file.
    int error() const { return error_; }
    // What the system knew of the file at the opening.
    const struct stat& status() const { return status_; }

    // Fills `out` with up to `count` bytes from `position` on. Fewer come only at the end of the file, which
    // is where it was at the opening, or where the device fails.
    size_t read_at(uint64_t position, char* out, size_t count) {
        const auto size = static_cast<uint64_t>(status_.st_size);
        if (position >= size) return 0;
        // Cut at the known size: the call that would only find the end of the file is saved.
        const auto wanted = static_cast<size_t>(std::min<uint64_t>(count, size - position));
        const size_t got = ReadAt(file_, position, out, wanted);
        if (got < wanted && error_ == 0) error_ = errno;
        return got;
    }

  private:
    bool Take(FileDescriptor file) {
        error_ = file.IsOpen() ? 0 : errno;
        file_ = std::move(file);
        return file_.IsOpen();
    }

    FileDescriptor file_;
    int error_ = 0;
    struct stat status_ {};
};

}  // namespace KXP
