// The gallery's folder, and the files below it that the server may open.
#pragma once

#include <string>

#include <sys/stat.h>

#include "base/FileDescriptor.h"
#include "common/threads/Mutex.h"

namespace host::page {

// Opens the regular file `path` for reading, which must be below `folder` with no link on the way from there,
// and sets `status`. Closed, with errno set, when it cannot: EXDEV for a path that leads elsewhere, EINVAL
// for what is no regular file.
KXP::FileDescriptor OpenBeneath(const std::string& folder, const std::string& path, struct stat& status);

// May be used from any thread.
class GalleryFolder {
  public:
    void Set(const std::string& path) EXCLUDES(mutex_);
    std::string path() const EXCLUDES(mutex_);
    // Opens a file of the gallery; the folder anew each time, because its drive may have been away.
    KXP::FileDescriptor Open(const std::string& path, struct stat& status) const EXCLUDES(mutex_);

  private:
    mutable KXP::Mutex mutex_;
    std::string path_ GUARDED_BY(mutex_);
};

}  // namespace host::page
