// The lines of -d timers: how long things took.
#pragma once

#include <chrono>
#include <map>
#include <string>

#include "common/json/Json.h"

namespace host {

// For one thread. Does nothing unless `shown`.
class Timers {
  public:
    // The clock of file times, because the delay of a notification is measured from its file's last change.
    using Clock = std::chrono::system_clock;

    explicit Timers(bool shown) : shown_(shown) {}

    // Prints a line at its end. `name` has to outlive it.
    class Scope {
      public:
        Scope(const Timers& timers, const char* name) : timers_(timers), name_(name), start_(Clock::now()) {}
        ~Scope() { timers_.Print(name_, Clock::now() - start_); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

      private:
        const Timers& timers_;
        const char* const name_;
        const Clock::time_point start_;
    };

    // Each message to the plug-in and each of its messages, which it sent at `when`. Print a line for each
    // answer and for each notification of a saved capture.
    void OnSent(const KXP::Document& envelope);
    void OnReceived(const KXP::Document& message, Clock::time_point when);

  private:
    struct Request {
        std::string method;
        Clock::time_point sent;
    };

    void Print(const std::string& what, Clock::duration took) const;
    void PrintDelay(const KXP::Document& notification, Clock::time_point when) const;

    const bool shown_;
    std::map<std::string, Request> requests_;  // those without an answer so far, by identifier
};

}  // namespace host
