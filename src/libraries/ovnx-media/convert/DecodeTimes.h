// When the packets of a video are decoded, for containers that say only when each is shown.
#pragma once

#include <cstdint>
#include <functional>
#include <queue>
#include <vector>

namespace ovnxmedia {

// In one unit, whatever it is.
class DecodeTimes {
  public:
    // `delay` is how many packets may precede one that is shown before them, `frame` how long one is shown
    // about.
    DecodeTimes(int delay, int64_t frame) : delay_(static_cast<size_t>(delay)), frame_(frame) {}

    // For the packets in their order. Each time is later than the one before. It is later than `shown` only
    // if the delay is too short.
    int64_t Next(int64_t shown) {
        waiting_.push(shown);
        int64_t time = shown - static_cast<int64_t>(delay_) * frame_;
        if (waiting_.size() > delay_) {
            time = waiting_.top();
            waiting_.pop();
        } else if (waiting_.size() > 1) {
            time = last_ + frame_;
            // What comes next has to be before the first that is shown.
            if (time >= waiting_.top()) time = last_ + 1;
        }
        if (hasLast_ && time <= last_) time = last_ + 1;
        hasLast_ = true;
        return last_ = time;
    }

  private:
    const size_t delay_;
    const int64_t frame_;
    std::priority_queue<int64_t, std::vector<int64_t>, std::greater<>> waiting_;
    int64_t last_ = 0;
    bool hasLast_ = false;
};

}  // namespace ovnxmedia
