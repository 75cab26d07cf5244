// How long the work on one input may go on. Loops whose length the input decides ask now and then.
#pragma once

#include <chrono>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {

class Budget {
  public:
    static constexpr std::chrono::seconds kLimit{20};

    // For tests and for callers within the product: never told to stop.
    explicit Budget(std::chrono::nanoseconds limit = kLimit) : Budget(limit, nullptr, nullptr) {}
    Budget(std::chrono::nanoseconds limit, int (*stop)(void*), void* context)
        : deadline_(std::chrono::steady_clock::now() + limit), stop_(stop), context_(context) {}

    bool IsStopped() const { return stop_ && stop_(context_) != 0; }
    bool IsOver() const { return std::chrono::steady_clock::now() >= deadline_; }

    // Throws Failure once the caller says stop or the time is over.
    void Check() const {
        if (IsStopped()) throw Failure(OVNX_MEDIA_STOPPED, "stopped");
        if (IsOver()) throw Failure(OVNX_MEDIA_OVER_LIMIT, "took too long");
    }

  private:
    const std::chrono::steady_clock::time_point deadline_;
    int (*const stop_)(void*);
    void* const context_;
};

}  // namespace ovnxmedia
