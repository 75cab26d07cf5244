// The entries of an open folder as the system lists them.
#pragma once

#include <cstddef>
#include <memory>

#include <dirent.h>

#include "base/FileDescriptor.h"

namespace KXP::Platform {

// Belongs to one thread.
class FolderEntries {
  public:
    // Takes the descriptor. IsOpen is false, with errno set, when it is closed or there is no memory.
    explicit FolderEntries(FileDescriptor folder);

    bool IsOpen() const { return listing_ != nullptr; }
    // Of an open folder.
    int descriptor() const;
    // The next entry, valid until the next call. Null at the end, with errno 0, and when the read fails.
    const dirent* Next();

  private:
    struct Listing;
    struct Delete {
        void operator()(Listing* listing) const;
    };

    FileDescriptor folder_;  // closed where the listing owns the descriptor
    std::unique_ptr<Listing, Delete> listing_;
};

}  // namespace KXP::Platform
