// A clock that stands still until somebody waits: waiting for a time makes it that time. Delays of hours pass
// in microseconds, on the one thread that steps the queue.
#pragma once

#include <atomic>
#include <chrono>

#include "common/task/Clock.h"

class FakeClock : public KXP::Clock {
  public:
    KXP::TimePoint Now() override { return KXP::TimePoint(std::chrono::nanoseconds(now_)); }

    void WaitUntil(KXP::CondVar&, KXP::Mutex&, KXP::TimePoint when) override {
        if (when > Now()) now_ = when.time_since_epoch().count();
    }

    void Advance(std::chrono::nanoseconds by) { now_ += by.count(); }

  private:
    // An hour after the epoch, well after the fixed times of commands and tasks.
    std::atomic<int64_t> now_{3600LL * 1000000000};
};
