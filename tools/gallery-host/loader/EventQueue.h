// Brings the plug-in's callbacks to the main thread, in their order. The plug-in calls back from many
// threads; everything else in this program runs on one.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

#include "base/SlabMemory.h"
#include "common/threads/Mutex.h"
#include "gallery-host/base/WakeUp.h"

namespace host {

struct Event {
    enum class Kind {
        kNotification,  // code: a ZvCefPluginNotification_t
        kReturned,      // an entry call returned; code: its result
        kThrew,         // an entry call threw; text: what it threw
    };
    Kind kind = Kind::kNotification;
    int code = 0;
    KXP::SlabString text;
    uint64_t thread = 0;  // by the system's number
    std::chrono::system_clock::time_point when;
};

class EventQueue {
  public:
    // From here on Push waits, when a plug-in sends faster than the output is read.
    static constexpr size_t kMaxBytes = size_t{256} << 20;

    EventQueue() = default;  // throws Failure when the system has no descriptors left
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    // May be called from any thread; records the calling thread and the time.
    void Push(Event::Kind kind, int code, KXP::SlabString text);
    // The oldest event, if any.
    std::optional<Event> Take();
    // Readable while there are events.
    int fd() const { return wakeUp_.fd(); }

  private:
    const WakeUp wakeUp_;
    KXP::Mutex mutex_;
    KXP::CondVar taken_;
    std::deque<Event> events_ GUARDED_BY(mutex_);
    size_t bytes_ GUARDED_BY(mutex_) = 0;
};

}  // namespace host
