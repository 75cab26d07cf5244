// The question what the watcher has not reported yet, from any thread to the watcher's own.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/src/watcher/FileWatcher.h"

namespace watcher {

class UnreportedQuery {
  public:
    using Paths = std::optional<UnreportedPaths>;

    struct Question {
        uint64_t number = 0;
        size_t most = 0;  // paths in each list of the answer
    };

    // Any thread: asks, and returns the number of the question.
    uint64_t Ask(size_t most) EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        last_.most = last_.number > lastAnswered_ ? std::max(last_.most, most) : most;
        return ++last_.number;
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
    std::optional<Question> Pending() EXCLUDES(mutex_) {
        const KXP::MutexLock lock(mutex_);
        return last_.number > lastAnswered_ ? std::optional(last_) : std::nullopt;
    }
    void Answer(uint64_t asked, Paths paths) EXCLUDES(mutex_) {
        {
            const KXP::MutexLock lock(mutex_);
            paths_ = std::move(paths);
            lastAnswered_ = asked;
        }
        answered_.NotifyAll();
    }

  private:
    KXP::Mutex mutex_;
    KXP::CondVar answered_;
    Question last_ GUARDED_BY(mutex_);
    uint64_t lastAnswered_ GUARDED_BY(mutex_) = 0;
    Paths paths_ GUARDED_BY(mutex_);
};

}  // namespace watcher
