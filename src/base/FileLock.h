// A lock between processes, on a file that exists for nothing else. It ends with the object, and with the
// process whatever way that ends.
#pragma once

#include <chrono>
#include <string>

#include "base/FileDescriptor.h"

namespace KXP {

class FileLock {
  public:
    // Creates the file when it is missing and waits for other holders, also those of this process, for at
    // most `limit`: a holder may have been suspended.
    FileLock(const std::string& path, std::chrono::milliseconds limit);

    // False, with errno set by the constructor, when the time ran out (EWOULDBLOCK) or the volume has no
    // locks.
    bool IsHeld() const { return file_.IsOpen(); }

  private:
    FileDescriptor file_;
};

}  // namespace KXP
