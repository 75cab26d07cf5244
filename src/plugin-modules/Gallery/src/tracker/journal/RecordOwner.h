// Which of the processes that share a folder writes the tracker's file there. The others follow it.
#pragma once

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>

#include "base/FileLock.h"
#include "common/threads/Mutex.h"

// TryOwn is for one thread at a time.
class RecordOwner {
  public:
    explicit RecordOwner(std::string lockFile) : lockFile_(std::move(lockFile)) {}

    // Becomes the owner if nobody is. It stays so until Release or the end of the process. On a volume
    // without locks everybody is.
    bool TryOwn() EXCLUDES(mutex_) {
        if (owns_) return true;
        auto lock = std::make_unique<KXP::FileLock>(lockFile_, std::chrono::milliseconds(0));
        const bool owns = lock->IsHeld() || errno != EWOULDBLOCK;
        const KXP::MutexLock guard(mutex_);
        lock_ = std::move(lock);
        owns_ = owns;
        return owns;
    }
    // Any thread.
    void Release() EXCLUDES(mutex_) {
        std::unique_ptr<KXP::FileLock> released;
        const KXP::MutexLock guard(mutex_);
        owns_ = false;
        released = std::move(lock_);
    }
    bool Owns() const { return owns_; }

  private:
    const std::string lockFile_;
    KXP::Mutex mutex_;
    std::unique_ptr<KXP::FileLock> lock_ GUARDED_BY(mutex_);
    std::atomic<bool> owns_{false};
};
