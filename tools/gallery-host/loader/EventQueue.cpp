#include "gallery-host/loader/EventQueue.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "gallery-host/base/Failure.h"

namespace host {

EventQueue::EventQueue() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (fd_ < 0) throw Failure(kExitFailed, std::string("cannot make an event: ") + std::strerror(errno));
}

EventQueue::~EventQueue() {
    close(fd_);
}

void EventQueue::Push(Event::Kind kind, int code, KXP::SlabString text) {
    const pid_t thread = static_cast<pid_t>(syscall(SYS_gettid));
    const auto when = std::chrono::system_clock::now();
    KXP::MutexLock lock(mutex_);
    while (bytes_ > kMaxBytes)
        taken_.Wait(mutex_);
    bytes_ += text.size();
    events_.push_back({kind, code, std::move(text), thread, when});
    const uint64_t one = 1;
    // Fails only when the counter is full, and then it is readable.
    [[maybe_unused]] const ssize_t written = write(fd_, &one, sizeof one);
}

std::optional<Event> EventQueue::Take() {
    KXP::MutexLock lock(mutex_);
    if (events_.empty()) return std::nullopt;
    Event event = std::move(events_.front());
    events_.pop_front();
    bytes_ -= event.text.size();
    taken_.NotifyAll();
    if (events_.empty()) {
        uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = read(fd_, &count, sizeof count);
    }
    return event;
}

}  // namespace host
