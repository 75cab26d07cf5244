// Locks between processes. They end with the process, whatever way that ends.
#pragma once

#include <chrono>
#include <string>

#include "base/FileDescriptor.h"
#include "base/ReadWrite.h"

namespace KXP {

// Takes a lock of `kind`, LOCK_EX or LOCK_SH, on an open file, which holds it until it is closed. Waits for
// other holders for at most `limit`: one may have been suspended. False with errno set: EWOULDBLOCK when the
// time ran out.
bool LockWithin(DescriptorRef file, int kind, std::chrono::milliseconds limit);

// A lock on a file that exists for nothing else. It ends with the object.
class FileLock {
  public:
    // Creates the file when it is missing and waits for other holders, also those of this process, for at
    // most `limit`.
    FileLock(const std::string& path, std::chrono::milliseconds limit);

    // False, with errno set by the constructor, when the time ran out (EWOULDBLOCK) or the volume has no
    // locks.
    bool IsHeld() const { return file_.IsOpen(); }

  private:
    FileDescriptor file_;
};

}  // namespace KXP
