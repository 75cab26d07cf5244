// A queue of entries in the order of their due times. One thread takes entries, and any thread may call the
// rest. That one is notified after the unlock, so that it does not wake up only to wait for the lock. The
// queue is still there then, even if the entry that it takes ends the queue's owner: a thread that enqueues
// keeps the queue alive during the call, by its own call of the owner or by a reference.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/SlabMemory.h"
#include "common/task/Clock.h"

namespace KXP {

class TimedNotificationQueue {
  public:
    class Notification : public InSlab {
      public:
        virtual ~Notification() = default;
        virtual void Execute() = 0;
        // What kind of work this is, to whoever enqueued it; null for most.
        virtual const void* Tag() const { return nullptr; }
    };

    explicit TimedNotificationQueue(Clock& clock) : clock_(clock) {}

    // Entries of equal time have no order among themselves: callers that need one make their times differ.
    void EnqueueNotification(TimePoint when, std::unique_ptr<Notification> notification) EXCLUDES(mutex_);

    // Makes sure that one EnqueueReserved to come finds memory. Throws std::bad_alloc; each successful call
    // is followed by one of the two below.
    void Reserve() EXCLUDES(mutex_);
    // The same as EnqueueNotification, and cannot fail. After Clear the entry is dropped.
    void EnqueueReserved(TimePoint when, std::unique_ptr<Notification> notification) noexcept
        EXCLUDES(mutex_);
    void GiveBackReserved() noexcept EXCLUDES(mutex_);

    // Waits for the first entry to fall due and takes it. `timeoutMs` bounds only the wait for an entry to
    // exist, 0 being no bound; an empty pointer means that it ran out.
    std::unique_ptr<Notification> WaitDequeueNotification(int timeoutMs) EXCLUDES(mutex_);

    // The tag of the entry that would be taken now; null when none is due.
    const void* TagOfNextDue() EXCLUDES(mutex_);

    // Drops entries due later than `horizon` from now, and from now on those that are enqueued with such a
    // time. A queue that is shutting down would otherwise wait for them.
    void RefuseLaterThan(std::chrono::milliseconds horizon) EXCLUDES(mutex_);
    // Takes entries of every time again.
    void RefuseNothing() EXCLUDES(mutex_);

    void Clear() EXCLUDES(mutex_);

  private:
    struct Entry {
        TimePoint when;
        std::unique_ptr<Notification> notification;
    };
    // The top of the standard heap is its largest element; ours is the earliest.
    static bool Later(const Entry& a, const Entry& b) { return b.when < a.when; }

    void Announce() noexcept;
    bool IsRefused(TimePoint when) REQUIRES(mutex_);
    void MakeRoom(size_t entries) REQUIRES(mutex_);
    void Push(Entry entry) REQUIRES(mutex_);
    // The first entry, of which there is one.
    std::unique_ptr<Notification> TakeFirst() REQUIRES(mutex_);
    // The first entry if it is due, else null, with the number of arrivals before and whether none is
    // reserved.
    std::unique_ptr<Notification> TakeDue(unsigned& arrivals, bool& isIdle) EXCLUDES(mutex_);
    // Waits awake for an entry that comes after so many others, for some microseconds at most.
    void AwaitBriefly(unsigned arrivals) const;
    std::unique_ptr<Notification> TakeRefused() EXCLUDES(mutex_);

    Clock& clock_;
    Mutex mutex_;
    CondVar changed_;
    std::vector<Entry, SlabAllocator<Entry>> heap_ GUARDED_BY(mutex_);
    std::atomic<unsigned> arrivals_{0};  // how many entries have come
    size_t reserved_ GUARDED_BY(mutex_) = 0;
    std::optional<std::chrono::milliseconds> horizon_ GUARDED_BY(mutex_);
};

}  // namespace KXP
