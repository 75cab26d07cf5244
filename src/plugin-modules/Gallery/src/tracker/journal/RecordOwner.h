// Which of the processes that share a folder writes the tracker's file there. The others follow it.
#pragma once

#include <atomic>
#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "base/FileLock.h"

// TryOwn and Release are for one thread at a time.
class RecordOwner {
  public:
    explicit RecordOwner(std::string lockFile) : lockFile_(std::move(lockFile)) {}

    // Becomes the owner if nobody is. It stays so until Release or the end of the process. On a volume
    // without locks everybody is.
    bool TryOwn() {
        if (owns_) return true;
        lock_.emplace(lockFile_, std::chrono::milliseconds(0));
        owns_ = lock_->IsHeld() || errno != EWOULDBLOCK;
        return owns_;
    }
    void Release() {
        owns_ = false;
        lock_.reset();
    }
    bool Owns() const { return owns_; }

  private:
    const std::string lockFile_;
    std::optional<KXP::FileLock> lock_;
    std::atomic<bool> owns_{false};
};
