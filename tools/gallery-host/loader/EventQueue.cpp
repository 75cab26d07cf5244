#include "gallery-host/loader/EventQueue.h"

#include <utility>

#include "common/system/System.h"

namespace host {

void EventQueue::Push(Event::Kind kind, int code, KXP::SlabString text) {
    const uint64_t thread = KXP::Platform::ThreadNumber();
    const auto when = std::chrono::system_clock::now();
    KXP::MutexLock lock(mutex_);
    while (bytes_ > kMaxBytes)
        taken_.Wait(mutex_);
    bytes_ += text.size();
    events_.push_back({kind, code, std::move(text), thread, when});
    if (events_.size() == 1) wakeUp_.Signal();
}

std::optional<Event> EventQueue::Take() {
    KXP::MutexLock lock(mutex_);
    if (events_.empty()) return std::nullopt;
    Event event = std::move(events_.front());
    events_.pop_front();
    bytes_ -= event.text.size();
    taken_.NotifyAll();
    if (events_.empty()) wakeUp_.Clear();
    return event;
}

}  // namespace host
