#include "common/task/TimedNotificationQueue.h"

#include <algorithm>

namespace KXP {

void TimedNotificationQueue::EnqueueNotification(TimePoint when, std::unique_ptr<Notification> notification) {
    {
        MutexLock lock(mutex_);
        if (horizon_ && when > clock_.Now() + *horizon_) return;
        heap_.push_back({when, std::move(notification)});
        std::push_heap(heap_.begin(), heap_.end(), Later);
    }
    changed_.NotifyAll();
}

std::unique_ptr<TimedNotificationQueue::Notification> TimedNotificationQueue::WaitDequeueNotification(
    int timeoutMs) {
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
    std::pop_heap(heap_.begin(), heap_.end(), Later);
    std::unique_ptr<Notification> due = std::move(heap_.back().notification);
    heap_.pop_back();
    return due;
}

const void* TimedNotificationQueue::TagOfNextDue() {
    MutexLock lock(mutex_);
    if (heap_.empty() || clock_.Now() < heap_.front().when) return nullptr;
    return heap_.front().notification->Tag();
}

void TimedNotificationQueue::RefuseLaterThan(std::chrono::milliseconds horizon) {
    std::vector<Entry> dropped;  // destroyed after the unlock: an entry's destructor may enqueue
    MutexLock lock(mutex_);
    horizon_ = horizon;
    const TimePoint limit = clock_.Now() + horizon;
    const auto tooLate = std::partition(heap_.begin(), heap_.end(),
                                        [limit](const Entry& entry) { return !(limit < entry.when); });
    std::move(tooLate, heap_.end(), std::back_inserter(dropped));
    heap_.erase(tooLate, heap_.end());
    std::make_heap(heap_.begin(), heap_.end(), Later);
}

void TimedNotificationQueue::RefuseNothing() {
    MutexLock lock(mutex_);
    horizon_.reset();
}

void TimedNotificationQueue::Clear() {
    std::vector<Entry> taken;
    {
        MutexLock lock(mutex_);
        taken.swap(heap_);
    }
    changed_.NotifyAll();
}

}  // namespace KXP
