// Mutex, MutexLock and CondVar: the standard ones, annotated for clang's thread-safety analysis.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "common/ThreadAnnotations.h"

namespace KXP {

class CAPABILITY("mutex") Mutex {
  public:
    void Lock() ACQUIRE() { mutex_.lock(); }
    void Unlock() RELEASE() { mutex_.unlock(); }

  private:
    friend class CondVar;
    std::mutex mutex_;
};

class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexLock() RELEASE() { mutex_.Unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

// Waits may end early; callers test their condition in a loop.
class CondVar {
  public:
    void Wait(Mutex& mutex) REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.mutex_, std::adopt_lock);
        condition_.wait(lock);
        lock.release();
    }

    void WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point when) REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.mutex_, std::adopt_lock);
        condition_.wait_until(lock, when);
        lock.release();
    }

    void NotifyAll() { condition_.notify_all(); }

  private:
    std::condition_variable condition_;
};

}  // namespace KXP
