// Mutex, MutexLock and CondVar: the standard ones, annotated for clang's thread-safety analysis.
//
// Locks nest two deep at most: a thread that holds an OuterMutex may lock a Mutex, and nothing else under
// either. A debug build aborts where a thread breaks this; docs/threads.md lists the pairs.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

#include "common/threads/ThreadAnnotations.h"

namespace KXP {

#ifndef NDEBUG
namespace lock_order {
// Of this thread. Plain numbers: a destructor would keep the library mapped until the thread ends.
inline thread_local int outerHeld = 0;
inline thread_local int leavesHeld = 0;
}  // namespace lock_order
#endif

class CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;

    void Lock() ACQUIRE() {
        CheckOrder();
        mutex_.lock();
    }
    void Unlock() RELEASE() {
        NoteUnlocked();  // first: an unlocked mutex may be gone
        mutex_.unlock();
    }

  protected:
    enum class Place { Outer, Leaf };
    explicit Mutex(Place place) : place_(place) {}

  private:
    friend class CondVar;

#ifndef NDEBUG
    void CheckOrder() const {
        if (lock_order::leavesHeld > 0 || (place_ == Place::Outer && lock_order::outerHeld > 0)) std::abort();
        ++Held();
    }
    void NoteUnlocked() const {
        --Held();
    }
    int& Held() const {
        return place_ == Place::Outer ? lock_order::outerHeld : lock_order::leavesHeld;
    }
#else
    void CheckOrder() const {}
    void NoteUnlocked() const {}
#endif

    [[maybe_unused]] const Place place_ = Place::Leaf;
    std::mutex mutex_;
};

// A mutex under which another may be locked.
class CAPABILITY("mutex") OuterMutex : public Mutex {
  public:
    OuterMutex() : Mutex(Place::Outer) {}
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

    // Where one thread waits, or each waits for the same and one of them will do.
    void NotifyOne() { condition_.notify_one(); }
    void NotifyAll() { condition_.notify_all(); }

  private:
    std::condition_variable condition_;
};

}  // namespace KXP
