// Read access to a regular file, for code that inspects files it knows nothing of: opening never blocks,
// pipes, devices and folders are never read, and a read costs one system call.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/ReadWrite.h"

namespace KXP {

// Not for sharing between threads.
class ifstream {
  public:
    // False, with nothing held, when the path cannot be opened or is no regular file; symbolic links are
    // followed.
    bool open(const std::string& path) {
        file_ = OpenForRead(path, &size_);
        return file_.IsOpen();
    }

    // Fills `out` with up to `count` bytes from `position` on. Fewer come only at the end of the file, which
    // is where it was at the opening, or where the device fails.
    size_t read_at(uint64_t position, char* out, size_t count) {
        if (position >= size_) return 0;
        // Cut at the known size: the call that would only find the end of the file is saved.
        return ReadAt(file_, position, out, static_cast<size_t>(std::min<uint64_t>(count, size_ - position)));
    }

  private:
    FileDescriptor file_;
    uint64_t size_ = 0;
};

}  // namespace KXP
