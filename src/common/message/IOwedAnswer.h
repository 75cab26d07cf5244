// The answer that a request is owed by whoever took it.
#pragma once

namespace KXP {

// A request and its response share one. If both are gone before it is settled, the request was lost on its
// way, and the destructor sends an answer that was made beforehand: no lock may be held where a message goes.
class IOwedAnswer {
  public:
    virtual ~IOwedAnswer() = default;
    // True once, for whoever sends the answer or knows that nobody expects one. Any thread.
    virtual bool Settle() = 0;
};

}  // namespace KXP
