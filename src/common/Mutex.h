// Mutex, MutexLock and CondVar: the standard ones, told to clang's thread-safety analysis.
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

// For code that may come back to itself on the same thread; everything else uses Mutex.
class CAPABILITY("mutex") RecursiveMutex {
  public:
    void Lock() ACQUIRE() { mutex_.lock(); }
    void Unlock() RELEASE() { mutex_.unlock(); }

  private:
    std::recursive_mutex mutex_;
};

template <typename M>
class SCOPED_CAPABILITY BasicMutexLock {
  public:
    explicit BasicMutexLock(M& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~BasicMutexLock() RELEASE() { mutex_.Unlock(); }
    BasicMutexLock(const BasicMutexLock&) = delete;
    BasicMutexLock& operator=(const BasicMutexLock&) = delete;

  private:
    M& mutex_;
};

using MutexLock = BasicMutexLock<Mutex>;
using RecursiveMutexLock = BasicMutexLock<RecursiveMutex>;

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
