// Wakes a thread that polls from another thread.
#pragma once

#include "base/FileDescriptor.h"

namespace host {

// Any thread.
class WakeUp {
  public:
    WakeUp();  // throws Failure when the system has no descriptors left

    // Readable from Signal until Clear.
    int fd() const { return readable_.get(); }
    void Signal() const;
    void Clear() const;

  private:
    KXP::FileDescriptor readable_;
    KXP::FileDescriptor writable_;
};

}  // namespace host
