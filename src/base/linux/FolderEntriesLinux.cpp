// The C library's own way asks the system three questions about each folder before it reads it.
#include <cerrno>
#include <new>
#include <utility>

#include "base/FolderEntries.h"
#include "base/SlabMemory.h"

namespace KXP::Platform {

static_assert(sizeof(dirent) == sizeof(dirent64) && offsetof(dirent, d_name) == offsetof(dirent64, d_name));

struct FolderEntries::Listing : InSlab {
    // A slab's largest block has room for it.
    static constexpr size_t kSize = 32000;

    size_t at = 0;
    size_t end = 0;
    alignas(dirent64) char bytes[kSize];
};

void FolderEntries::Delete::operator()(Listing* listing) const {
    delete listing;
}

FolderEntries::FolderEntries(FileDescriptor folder) : folder_(std::move(folder)) {
    if (!folder_.IsOpen()) return;
    try {
        listing_.reset(new Listing);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
    }
}

int FolderEntries::descriptor() const {
    return folder_.get();
}

const dirent* FolderEntries::Next() {
    errno = 0;
    if (listing_->at == listing_->end) {
        const ssize_t got = getdents64(folder_.get(), listing_->bytes, Listing::kSize);
        // A folder that was deleted has no more entries.
        if (got < 0 && errno == ENOENT) errno = 0;
        if (got <= 0) return nullptr;
        listing_->at = 0;
        listing_->end = static_cast<size_t>(got);
    }
    const auto* const entry = reinterpret_cast<const dirent*>(&listing_->bytes[listing_->at]);
    listing_->at += entry->d_reclen;
    return entry;
}

}  // namespace KXP::Platform
