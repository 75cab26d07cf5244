// Read access to a regular file, for code that inspects files it knows nothing of: opening never blocks and
// never touches a pipe, device or folder, and a read costs one system call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace KXP {

// Owns one descriptor. Not for sharing between threads.
class ifstream {
  public:
    ifstream() = default;
    ~ifstream();
    ifstream(const ifstream&) = delete;
    ifstream& operator=(const ifstream&) = delete;

    // False, with nothing held, when the path cannot be opened or is no regular file; symbolic links are
    // followed. Call it once.
    bool open(const std::string& path);

    // Fills `out` with up to `count` bytes from `position` on. Fewer come only at the end of the file, which
    // is where it was at the opening, or where the device fails.
    size_t read_at(uint64_t position, char* out, size_t count);

  private:
    int descriptor_ = -1;
    uint64_t size_ = 0;
};

}  // namespace KXP
