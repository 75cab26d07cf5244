// An owned POSIX file descriptor, and whole reads and writes through it. The folders that the product reads
// are open to everybody, so opening never blocks on a pipe and never yields a folder or a device.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

struct stat;

namespace KXP {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~FileDescriptor() { Close(); }

    bool IsOpen() const { return fd_ >= 0; }
    int get() const { return fd_; }
    // Leaves the descriptor to the caller.
    int Release() { return std::exchange(fd_, -1); }

    // False when a write that was put off has failed.
    bool Close();

  private:
    int fd_ = -1;
};

// Opens a regular file, following a symbolic link. Anything else gives a closed descriptor with errno set.
// Fills `size` with the file's own.
FileDescriptor OpenForRead(const std::string& path, uint64_t* size = nullptr);

// The same, with all that the system knows of the open file.
FileDescriptor OpenForRead(const std::string& path, struct stat& status);

// The same for writing, creating the file with `mode` less the umask; an old file keeps its bytes.
FileDescriptor OpenForWrite(const std::string& path, unsigned mode);

// For reading and writing a file that is there.
FileDescriptor OpenForUpdate(const std::string& path, uint64_t* size = nullptr);

// The next bytes at the descriptor's position: their number, 0 at the end, -1 with errno set.
long ReadSome(const FileDescriptor& file, char* buffer, size_t size);

// Fills `buffer` with bytes from `position` on; fewer come only at the end of the file or where a read fails.
size_t ReadAt(const FileDescriptor& file, uint64_t position, char* buffer, size_t size);

// Writes all bytes from `offset` on. False with errno set, with an unknown part written.
bool WriteFullyAt(const FileDescriptor& file, const char* bytes, size_t size, size_t offset);

// The bytes of a file in memory, with kSlack zero bytes behind them.
struct FileBytes {
    static constexpr size_t kSlack = 16;

    std::unique_ptr<char[]> bytes;
    size_t size = 0;

    std::string_view view() const { return {bytes.get(), size}; }
};

// Reads from the start, as much as the file holds when it is asked for its size. False with errno set when a
// read fails or the file is larger than `limit` (EFBIG).
bool ReadWhole(const FileDescriptor& file, size_t limit, FileBytes& content);

}  // namespace KXP
