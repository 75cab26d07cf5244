// How long the work on one input may take. Loops whose length depends on the input check it now and then.
#pragma once

#include <chrono>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {

class Budget {
  public:
    static constexpr std::chrono::seconds kLimit{20};

    // A budget that nobody stops.
    explicit Budget(std::chrono::nanoseconds limit = kLimit) : Budget(limit, nullptr, nullptr) {}
    Budget(std::chrono::nanoseconds limit, int (*stop)(void*), void* context)
        : deadline_(std::chrono::steady_clock::now() + limit), stop_(stop), context_(context) {}

    bool IsStopped() const { return stop_ && stop_(context_) != 0; }
    bool IsOver() const { return std::chrono::steady_clock::now() >= deadline_; }

    // Throws Failure once the caller has asked to stop or the time is over.
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
