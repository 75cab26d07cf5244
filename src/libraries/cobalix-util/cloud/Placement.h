// The folder that files from the cloud are put into. From it downwards no symbolic link is followed: the
// folder is the user's, and what stands in it must not lead a file elsewhere.
#pragma once

#include <string>
#include <utility>

#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"
#include "libraries/cobalix-util/cloud/Sha256.h"

namespace KXP::Cloud {

class Handle {  // an owned file descriptor
  public:
    explicit Handle(int fd = -1) : fd_(fd) {}
    Handle(Handle&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Handle();

    bool IsOpen() const { return fd_ >= 0; }
    int get() const { return fd_; }

  private:
    int fd_;
};

class LocalFolder {
  public:
    // Made when it is missing, with the folders above it. Throws Error when it cannot be had.
    explicit LocalFolder(const std::string& path);

    // Whether the file is there with the size and the digest told. Costs reading a file of that size.
    bool Holds(const ManifestFile& file, const StopAsked& stopAsked) const;

  private:
    friend class IncomingFile;

    // The folder that a path in this one lies in; closed when it is not there.
    Handle ParentOf(const std::string& path, bool create) const;

    Handle folder_;
};

// A file on its way: bytes go into a neighbour of its place, which takes the place when they are found good,
// and is removed otherwise. Everything throws Error when the disk does not do it.
class IncomingFile {
  public:
    IncomingFile(const LocalFolder& folder, const ManifestFile& file);
    ~IncomingFile();
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;

    void Add(const char* bytes, size_t size);
    // Throws Error for bytes of another number or digest than told.
    void Place();

  private:
    const ManifestFile& file_;
    Handle parent_;
    std::string neighbour_;  // empty when there is none
    Handle out_;
    uint64_t size_ = 0;
    Sha256 digest_;
};

}  // namespace KXP::Cloud
