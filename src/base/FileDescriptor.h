// An owned POSIX file descriptor, and the ways to open one. The folders that the product reads are open to
// everybody, so opening a file never blocks on a pipe and never returns a folder or a device. Every call that
// opens returns a closed descriptor and sets errno when it fails.
#pragma once

#include <cstdint>
#include <string>
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

    // False when a delayed write has failed.
    bool Close();

  private:
    int fd_ = -1;
};

// Whether what failed with this number may succeed later although nobody does anything about the file: the
// disk or the server is away, or the process has run out of something.
bool IsPassingError(int error);

// What opening does with a symbolic link at the end of the path.
enum class Links { Follow, Refuse };

// Opens a regular file for reading and sets `size` to its size; anything else fails with EINVAL.
FileDescriptor OpenForRead(const std::string& path, uint64_t* size = nullptr);

// The same, with all that the system knows of the open file.
FileDescriptor OpenForRead(const std::string& path, struct stat& status, Links links = Links::Follow);

// Opens a regular file in the folder that the descriptor `folder` is of.
FileDescriptor OpenForReadAt(int folder, const std::string& name, struct stat& status, Links links);

// Opens a regular file for writing and creates it with `mode` less the umask when it is missing; an old file
// keeps its bytes, of which `size` gets the number.
FileDescriptor OpenForWrite(const std::string& path, unsigned mode, uint64_t* size = nullptr);

// Opens an existing regular file for reading and writing.
FileDescriptor OpenForUpdate(const std::string& path, uint64_t* size = nullptr);

// Opens a folder, whose entries can then be read.
FileDescriptor OpenFolder(const std::string& path, Links links = Links::Follow);

// Opens a folder in an open folder. A link is refused.
FileDescriptor OpenFolderAt(const FileDescriptor& folder, const std::string& name);

}  // namespace KXP
