// What the plug-in is to be notified of, in the order of the changes: a change that has to be in the
// tracker's file first waits for the write, and later news waits for what stands before it.
//
// Any thread. News is added while the lock of what has changed is held, which fixes the order, and delivered
// by Drain with none held. Its mutex is a leaf.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

#include "common/Mutex.h"
#include "common/RetVal.h"
#include "common/plugincommon/task/Clock.h"

class News {
  public:
    using Event = std::function<void()>;

    // The change that news is of. What a write decides on is dropped and logged when the write fails.
    enum class Change {
        Tracked,
        Untracked,
        None,  // no write decides on it
    };

    explicit News(KXP::Clock& clock) : clock_(clock) {}

    // `notify` may be null, for a change that has to be written and that nobody is notified of.
    void Add(Change change, Event notify) EXCLUDES(mutex_);
    // Ahead of all that waits for a write.
    void AddAtOnce(Event notify) EXCLUDES(mutex_);

    bool HasUnwritten() const EXCLUDES(mutex_);
    // Whether the oldest of what waits, if anything does, has waited for less than `limit`.
    bool MayWait(std::chrono::milliseconds limit) const EXCLUDES(mutex_);
    // What waits now is what the next ReleaseCovered is about. One writer at a time.
    void CoverAll() EXCLUDES(mutex_);
    // What was covered has been written, or could not be.
    void ReleaseCovered(const KXP::RetVal& written) EXCLUDES(mutex_);

    // Delivers what waits for nothing, one after the other. While one thread does, others leave theirs to
    // that one, so that the order holds; an event may add more. What an event throws is logged.
    void Drain() EXCLUDES(mutex_);

  private:
    struct Item {
        Change change;
        Event notify;
    };
    std::vector<Change> TakeCovered(bool written) EXCLUDES(mutex_);
    bool TakeNext(Event& event) EXCLUDES(mutex_);

    KXP::Clock& clock_;
    mutable KXP::Mutex mutex_;
    std::deque<Item> waiting_ GUARDED_BY(mutex_);
    KXP::TimePoint waitsSince_ GUARDED_BY(mutex_);
    size_t covered_ GUARDED_BY(mutex_) = 0;  // of `waiting_`
    std::deque<Event> ready_ GUARDED_BY(mutex_);
    bool draining_ GUARDED_BY(mutex_) = false;
};
