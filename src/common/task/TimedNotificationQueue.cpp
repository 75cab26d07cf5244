#include "common/task/TimedNotificationQueue.h"

#include <algorithm>
#include <thread>

namespace KXP {
namespace {

constexpr size_t kKeptCapacity = 1024;

// A page's next request often follows its last answer. To be put to sleep and woken costs some 15 us and
// three system calls, so a look of this length saves both. Not while a function runs: it takes longer.
constexpr std::chrono::microseconds kBriefWait{20};

}  // namespace

void TimedNotificationQueue::EnqueueNotification(TimePoint when, std::unique_ptr<Notification> notification) {
    Entry entry{when, std::move(notification)};  // destroyed after the unlock if it is not enqueued
    {
        MutexLock lock(mutex_);
        if (IsRefused(when)) return;
        MakeRoom(1);
        Push(std::move(entry));
    }
    Announce();
}

void TimedNotificationQueue::Reserve() {
    MutexLock lock(mutex_);
    MakeRoom(1);
    ++reserved_;
}

void TimedNotificationQueue::EnqueueReserved(TimePoint when,
                                             std::unique_ptr<Notification> notification) noexcept {
    Entry entry{when, std::move(notification)};
    {
        MutexLock lock(mutex_);
        --reserved_;
        if (IsRefused(when) || heap_.size() == heap_.capacity()) return;
        Push(std::move(entry));
    }
    Announce();
}

void TimedNotificationQueue::GiveBackReserved() noexcept {
    MutexLock lock(mutex_);
    --reserved_;
}

// After the unlock: the one who takes would otherwise meet the lock, and sleep.
void TimedNotificationQueue::Announce() noexcept {
    ++arrivals_;
    changed_.NotifyOne();
}

bool TimedNotificationQueue::IsRefused(TimePoint when) {
    return horizon_ && when > clock_.Now() + *horizon_;
}

// For so many more entries beside those that were reserved.
void TimedNotificationQueue::MakeRoom(size_t entries) {
    const size_t needed = heap_.size() + reserved_ + entries;
    if (needed > heap_.capacity()) heap_.reserve(std::max(needed, 2 * heap_.capacity()));
}

void TimedNotificationQueue::Push(Entry entry) {
    heap_.push_back(std::move(entry));
    std::push_heap(heap_.begin(), heap_.end(), Later);
}

std::unique_ptr<TimedNotificationQueue::Notification> TimedNotificationQueue::TakeFirst() {
    std::pop_heap(heap_.begin(), heap_.end(), Later);
    std::unique_ptr<Notification> first = std::move(heap_.back().notification);
    heap_.pop_back();
    // After a burst.
    if (heap_.empty() && reserved_ == 0 && heap_.capacity() > kKeptCapacity) heap_.shrink_to_fit();
    return first;
}

std::unique_ptr<TimedNotificationQueue::Notification> TimedNotificationQueue::TakeDue(unsigned& arrivals,
                                                                                      bool& isIdle) {
    arrivals = arrivals_;
    MutexLock lock(mutex_);
    isIdle = reserved_ == 0;
    return heap_.empty() || clock_.Now() < heap_.front().when ? nullptr : TakeFirst();
}

void TimedNotificationQueue::AwaitBriefly(unsigned arrivals) const {
    static const bool others = std::thread::hardware_concurrency() > 1;
    if (!others) return;
    const auto end = std::chrono::steady_clock::now() + kBriefWait;
    while (arrivals_ == arrivals && std::chrono::steady_clock::now() < end) {
    }
}

std::unique_ptr<TimedNotificationQueue::Notification> TimedNotificationQueue::WaitDequeueNotification(
    int timeoutMs) {
    unsigned arrivals = 0;
    bool isIdle = false;
    if (std::unique_ptr<Notification> due = TakeDue(arrivals, isIdle)) return due;
    if (isIdle) AwaitBriefly(arrivals);
    MutexLock lock(mutex_);
    const TimePoint deadline = clock_.Now() + std::chrono::milliseconds(timeoutMs);
    // The top is read anew on each wake: an earlier entry may have arrived, or all may be gone.
    while (heap_.empty() || clock_.Now() < heap_.front().when) {
        if (!heap_.empty()) {
            clock_.WaitUntil(changed_, mutex_, TimePoint(heap_.front().when));
        } else if (timeoutMs <= 0) {
            changed_.Wait(mutex_);
        } else if (clock_.Now() < deadline) {
            clock_.WaitUntil(changed_, mutex_, deadline);
        } else {
            return nullptr;
        }
    }
    return TakeFirst();
}

const void* TimedNotificationQueue::TagOfNextDue() {
    MutexLock lock(mutex_);
    if (heap_.empty() || clock_.Now() < heap_.front().when) return nullptr;
    return heap_.front().notification->Tag();
}

void TimedNotificationQueue::RefuseLaterThan(std::chrono::milliseconds horizon) {
    {
        MutexLock lock(mutex_);
        horizon_ = horizon;
    }
    while (TakeRefused()) {
    }
}

// One at a time, because an entry's destructor may enqueue, and needs the lock to be free.
std::unique_ptr<TimedNotificationQueue::Notification> TimedNotificationQueue::TakeRefused() {
    MutexLock lock(mutex_);
    if (!horizon_) return nullptr;
    const TimePoint limit = clock_.Now() + *horizon_;
    const auto found =
        std::find_if(heap_.begin(), heap_.end(), [limit](const Entry& entry) { return limit < entry.when; });
    if (found == heap_.end()) return nullptr;
    std::unique_ptr<Notification> refused = std::move(found->notification);
    heap_.erase(found);
    std::make_heap(heap_.begin(), heap_.end(), Later);
    return refused;
}

void TimedNotificationQueue::RefuseNothing() {
    MutexLock lock(mutex_);
    horizon_.reset();
}

void TimedNotificationQueue::Clear() {
    std::vector<Entry, SlabAllocator<Entry>> taken;
    {
        MutexLock lock(mutex_);
        taken.swap(heap_);
    }
    changed_.NotifyOne();
}

}  // namespace KXP
