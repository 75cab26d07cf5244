// The folder that files from the cloud are put into. Below it no symbolic link is followed: the folder is the
// user's, and nothing in it may lead a file elsewhere.
#pragma once

#include <cstdint>
#include <string>

#include "base/NewFile.h"
#include "libraries/cobalix-util/cloud/Error.h"
#include "libraries/cobalix-util/cloud/Manifest.h"
#include "libraries/digest/Sha256.h"

namespace KXP::Cloud {

class LocalFolder {
  public:
    // Made when it is missing, with the folders above it. Throws Error when that fails.
    explicit LocalFolder(const std::string& path);

    // Whether the file is there with the size and the digest that the manifest states. Costs reading a file
    // of that size.
    bool Holds(const ManifestFile& file, const StopAsked& stopAsked) const;

  private:
    friend class IncomingFile;

    // The folder that a path in this one lies in; closed when it is not there.
    FileDescriptor FolderOf(const std::string& path, bool create) const;

    FileDescriptor folder_;
};

// A file on its way, which takes its place once its bytes are found good and otherwise vanishes. Everything
// throws Error when the disk fails.
class IncomingFile {
  public:
    IncomingFile(const LocalFolder& folder, const ManifestFile& file);

    void Add(const char* bytes, size_t size);
    // Throws Error for bytes of another number or digest than the manifest states.
    void Place();

  private:
    const ManifestFile& file_;
    NewFile out_;
    uint64_t size_ = 0;
    Sha256 digest_;
};

}  // namespace KXP::Cloud
