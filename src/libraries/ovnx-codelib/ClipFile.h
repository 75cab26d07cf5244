// A file that appears in its place whole and durable, or not at all.
#pragma once

#include <string>

#include <sys/stat.h>

#include "common/FileDescriptor.h"

namespace codelib {

class ClipFile {
  public:
    // Makes an empty file beside `path`, under a name that is no media's. False with errno set when that
    // cannot be done, or the path leads to something other than a regular file.
    bool Create(const std::string& path, mode_t mode);
    ClipFile() = default;
    // Removes what was not put in place.
    ~ClipFile();
    ClipFile(const ClipFile&) = delete;
    ClipFile& operator=(const ClipFile&) = delete;

    int fd() const { return file_.get(); }

    // Whether the older file in the place is that one.
    bool Replaces(const struct stat& other) const;

    // Makes the content durable and puts it in its place, for that of an older file. False with errno set.
    bool Commit();

  private:
    KXP::FileDescriptor folder_;
    KXP::FileDescriptor file_;
    std::string name_;
    std::string temporaryName_;  // empty while there is none
};

}  // namespace codelib
