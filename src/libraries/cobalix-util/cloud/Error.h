// What ends a cloud call early; the text is for the log.
#pragma once

#include <functional>
#include <stdexcept>

namespace KXP::Cloud {

class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Whether the work at hand is to be left. Asked often, so it must be cheap; from the calling thread only.
using StopAsked = std::function<bool()>;

inline void ThrowIfStopped(const StopAsked& stopAsked) {
    if (stopAsked()) throw Error("aborted");
}

}  // namespace KXP::Cloud
