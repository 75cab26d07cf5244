// A file in memory that holds an input, for readers that take a descriptor or a path.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

class MemoryFile {
  public:
    MemoryFile() : fd_(memfd_create("fuzz", MFD_CLOEXEC)) {
        if (fd_ < 0) std::abort();
    }
    ~MemoryFile() { close(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    // Replaces the content.
    void Set(const uint8_t* data, size_t size) {
        if (ftruncate(fd_, 0) != 0 || pwrite(fd_, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    }

    int fd() const { return fd_; }
    // Opens the same file, for as long as this object exists.
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

  private:
    const int fd_;
};
