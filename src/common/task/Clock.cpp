#include "common/task/Clock.h"

namespace KXP {
namespace {

class SteadyClock : public Clock {
  public:
    TimePoint Now() override { return std::chrono::steady_clock::now(); }
    void WaitUntil(CondVar& condition, Mutex& mutex, TimePoint when) override REQUIRES(mutex) {
        condition.WaitUntil(mutex, when);
    }
};

}  // namespace

Clock& Clock::Steady() {
    static SteadyClock clock;
    return clock;
}

}  // namespace KXP
