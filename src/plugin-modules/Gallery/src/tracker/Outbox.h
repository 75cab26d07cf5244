// Events on their way out of a locked part of the program: put in while its lock is held, which fixes their
// order, and told when no lock is.
#pragma once

#include <deque>
#include <functional>

#include "common/Mutex.h"

class Outbox {
  public:
    using Event = std::function<void()>;

    void Put(Event event) EXCLUDES(mutex_);
    // Tells what is in it, one after the other. While one thread is at it others leave theirs to that one, so
    // that the order holds; an event may put in more. What an event throws is logged.
    void Drain() EXCLUDES(mutex_);

  private:
    bool TakeNext(Event& event) EXCLUDES(mutex_);

    KXP::Mutex mutex_;
    std::deque<Event> events_ GUARDED_BY(mutex_);
    bool draining_ GUARDED_BY(mutex_) = false;
};
