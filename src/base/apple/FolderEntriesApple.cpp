#include <cerrno>

#include "base/FolderEntries.h"

namespace KXP::Platform {

// The C library's.
struct FolderEntries::Listing {
    DIR* entries;
};

void FolderEntries::Delete::operator()(Listing* listing) const {
    closedir(listing->entries);
    delete listing;
}

// A listing has a descriptor of its own, which its end closes.
FolderEntries::FolderEntries(FileDescriptor folder) {
    DIR* const entries = folder.IsOpen() ? fdopendir(folder.get()) : nullptr;
    if (!entries) return;
    (void)folder.Release();
    listing_.reset(new Listing{entries});
}

int FolderEntries::descriptor() const {
    return dirfd(listing_->entries);
}

const dirent* FolderEntries::Next() {
    errno = 0;
    return readdir(listing_->entries);
}

}  // namespace KXP::Platform
