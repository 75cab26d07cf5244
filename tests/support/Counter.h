// Waits of tests: on a condition, with a bound, never on time alone.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// Counts up; waiters wait for a count. Any thread.
class Counter {
  public:
    void Add() {
        // Notified under the lock: a waiter may destroy the counter as soon as it sees the count.
        std::lock_guard<std::mutex> lock(mutex_);
        ++count_;
        changed_.notify_all();
    }

    int Get() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return count_;
    }

    // False when the count was not reached in a minute, which is a hang by any measure.
    bool WaitFor(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::minutes(1), [&] { return count_ >= count; });
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

// Waits until the condition holds; false when it does not in half a minute.
template <typename Condition>
bool Soon(const Condition& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    return condition();
}
