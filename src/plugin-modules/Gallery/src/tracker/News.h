// Notifications for the plug-in, in the order of the changes. One whose change has to be written to the
// tracker's file first waits for the write, and later ones wait for those before them.
//
// Any thread. They are added under the lock of the data that changed, which fixes their order, and delivered
// by Drain with no lock held. The mutex here may be taken under the tracker's.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

#include "common/results/RetVal.h"
#include "common/task/Clock.h"
#include "common/threads/Mutex.h"

class News {
  public:
    using Event = std::function<void()>;

    // What has changed. Except for None the notification depends on a write: when that fails, it is logged
    // and dropped.
    enum class Change {
        Tracked,
        Untracked,
        None,  // does not depend on a write
    };

    explicit News(KXP::Clock& clock) : clock_(clock) {}

    // `notify` may be null for a change that has to be written without a notification.
    void Add(Change change, Event notify) EXCLUDES(mutex_);
    // Adds it before all that wait for a write.
    void AddAtOnce(Event notify) EXCLUDES(mutex_);

    bool HasUnwritten() const EXCLUDES(mutex_);
    // Whether every notification has waited for less than `limit`.
    bool MayWait(std::chrono::milliseconds limit) const EXCLUDES(mutex_);
    // The next ReleaseCovered applies to all that wait now. One writer at a time.
    void CoverAll() EXCLUDES(mutex_);
    // The covered changes have been written, or the write has failed.
    void ReleaseCovered(const KXP::RetVal& written) EXCLUDES(mutex_);

    // Delivers the notifications that are ready, one after another. Only one thread delivers at a time, also
    // what others add meanwhile; this keeps the order. An event may add more, and its exceptions are logged.
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
    size_t covered_ GUARDED_BY(mutex_) = 0;  // how many of `waiting_`, from the front
    std::deque<Event> ready_ GUARDED_BY(mutex_);
    bool draining_ GUARDED_BY(mutex_) = false;
};
