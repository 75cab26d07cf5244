// The question what the watcher has not reported yet, from any thread to the watcher's own.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/threads/Mutex.h"

namespace watcher {

class UnreportedQuery {
  public:
    using Paths = std::optional<std::vector<std::string>>;

    // Any thread: asks, and returns the number of the question.
    uint64_t Ask() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        return ++lastAsked_;
    }
    // Waits for the answer. No value when there is none at `limit`.
    Paths Await(uint64_t asked, std::chrono::steady_clock::time_point limit) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        while (lastAnswered_ < asked && std::chrono::steady_clock::now() < limit)
            answered_.WaitUntil(mutex_, limit);
        return lastAnswered_ < asked ? std::nullopt : paths_;
    }

    // The watcher's thread: the last question that has no answer, if there is one. Its answer is that of all
    // before it.
    std::optional<uint64_t> Pending() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        return lastAsked_ > lastAnswered_ ? std::optional(lastAsked_) : std::nullopt;
    }
    void Answer(uint64_t asked, Paths paths) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        paths_ = std::move(paths);
        lastAnswered_ = asked;
        answered_.NotifyAll();
    }

  private:
    KXP::Mutex mutex_;
    KXP::CondVar answered_;
    uint64_t lastAsked_ GUARDED_BY(mutex_) = 0;
    uint64_t lastAnswered_ GUARDED_BY(mutex_) = 0;
    Paths paths_ GUARDED_BY(mutex_);
};

}  // namespace watcher
