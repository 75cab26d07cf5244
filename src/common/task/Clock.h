// The clock of a queue, replaceable so that tests step through delays without waiting for them.
#pragma once

#include <chrono>

#include "common/threads/Mutex.h"

namespace KXP {

using TimePoint = std::chrono::steady_clock::time_point;

class Clock {
  public:
    virtual ~Clock() = default;
    virtual TimePoint Now() = 0;
    // Waits on `condition` until it is notified or `when` has come; may return early.
    virtual void WaitUntil(CondVar& condition, Mutex& mutex, TimePoint when) REQUIRES(mutex) = 0;

    // The steady clock of the process.
    static Clock& Steady();
};

}  // namespace KXP
