// Collects events for a fixed time after the first one: each path once, in the order of its first event.
// Reads no clock; the caller passes the time. One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "plugin-modules/Gallery/src/watcher/WatchDecision.h"

namespace watcher {

using TimePoint = std::chrono::steady_clock::time_point;

class EventWindow {
  public:
    // With this many events the window closes early.
    static constexpr size_t kCapacity = 65536;

    explicit EventWindow(std::chrono::milliseconds length, size_t capacity = kCapacity)
        : length_(length), capacity_(capacity) {}

    // Adds the flags to those of earlier events of the path. If they disagree on file or folder, the last
    // event counts, because it describes what is there now.
    void Add(const std::string& path, uint32_t flags, TimePoint now);

    // When the window closes; no value when it is not open.
    std::optional<TimePoint> Closes() const { return closes_; }

    // Whether the events should be taken now: the time is over, or the window is full.
    bool IsDue(TimePoint now) const { return closes_ && (now >= *closes_ || events_.size() >= capacity_); }

    const std::deque<WatchEvent>& events() const { return events_; }

    // Closes the window and returns its events.
    std::deque<WatchEvent> Take();

  private:
    const std::chrono::milliseconds length_;
    const size_t capacity_;
    std::optional<TimePoint> closes_;
    std::deque<WatchEvent> events_;  // a deque: the index points to its elements
    std::unordered_map<std::string_view, WatchEvent*> index_;
};

}  // namespace watcher
