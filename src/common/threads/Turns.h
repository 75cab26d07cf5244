// One worker at a time for each thing, where the work takes too long, or logs too much, to hold a lock.
#pragma once

#include <set>
#include <string>
#include <utility>

#include "common/threads/Mutex.h"

namespace KXP {

// The things that are being worked on, by name. Any thread.
class Turns {
  public:
    // Waits until nobody else works on the thing. A thread holds one turn at a time.
    void Take(const std::string& name) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        while (!taken_.insert(name).second)
            ended_.Wait(mutex_);
    }
    void End(const std::string& name) EXCLUDES(mutex_) {
        {
            const MutexLock lock(mutex_);
            taken_.erase(name);
        }
        ended_.NotifyAll();
    }

  private:
    Mutex mutex_;
    CondVar ended_;
    std::set<std::string> taken_ GUARDED_BY(mutex_);
};

// Holds a turn until the end of the scope.
class Turn {
  public:
    Turn(Turns& turns, std::string name) : turns_(turns), name_(std::move(name)) { turns_.Take(name_); }
    ~Turn() { turns_.End(name_); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

  private:
    Turns& turns_;
    const std::string name_;
};

}  // namespace KXP
