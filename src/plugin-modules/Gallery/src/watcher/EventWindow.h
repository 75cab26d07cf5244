// Collects events, each path once in the order of first arrival, from the first event on for a fixed time.
// Pure: the time is told. One thread.
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
    // So much is kept at most before it is told early.
    static constexpr size_t kCapacity = 65536;

    explicit EventWindow(std::chrono::milliseconds length, size_t capacity = kCapacity)
        : length_(length), capacity_(capacity) {}

    // Adds the flags to those that came for the path before. Of file and folder the last one holds, for that
    // is what lies there now.
    void Add(const std::string& path, uint32_t flags, TimePoint now);

    // When the window closes; no value while it is not open.
    std::optional<TimePoint> Closes() const { return closes_; }

    // Whether the events are to be taken now: the time is over, or they are too many to wait for more.
    bool IsDue(TimePoint now) const { return closes_ && (now >= *closes_ || events_.size() >= capacity_); }

    size_t size() const { return events_.size(); }
    const std::deque<WatchEvent>& events() const { return events_; }

    // Closes the window and gives what was in it.
    std::deque<WatchEvent> Take();

  private:
    const std::chrono::milliseconds length_;
    const size_t capacity_;
    std::optional<TimePoint> closes_;
    std::deque<WatchEvent> events_;  // a deque, for the index looks into its elements
    std::unordered_map<std::string_view, WatchEvent*> index_;
};

}  // namespace watcher
