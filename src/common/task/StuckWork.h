// Work that a dead disk may hold for ever, and that nobody waits for then.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include "common/threads/Mutex.h"

namespace KXP {

// How long work may show no progress before it counts as stuck. Longer than a stalled queue waits for its
// tasks.
constexpr std::chrono::milliseconds kStuckAfter{1500};

// The end of some work, which another thread waits for.
class WorkEnd {
  public:
    void Report() EXCLUDES(mutex_);
    // Returns false when the end was not reported and `progress` has not changed for so long.
    bool Await(const std::atomic<uint64_t>& progress, std::chrono::milliseconds limit = kStuckAfter)
        EXCLUDES(mutex_);

  private:
    Mutex mutex_;
    CondVar changed_;
    bool ended_ GUARDED_BY(mutex_) = false;
};

// Runs `work` on a thread of its own, or on the calling one where none can be started, and waits for its end.
// Returns false if the work gets stuck: its thread is then abandoned. `work` and `owner` are kept until it
// ends. `progress` is not used after the return. Throws what `work` throws, which is lost once it is
// abandoned.
bool RunUnlessStuck(std::function<void()> work, const std::atomic<uint64_t>& progress,
                    std::shared_ptr<void> owner, std::chrono::milliseconds limit = kStuckAfter);

// Looks at one place whose disk may not answer, by one thread.
class BoundedLook {
  public:
    // The same as RunUnlessStuck for work that has no progress. While an earlier look is stuck, returns false
    // at once.
    bool Run(const std::function<void()>& look, std::shared_ptr<void> owner);

  private:
    std::weak_ptr<void> underWay_;
};

}  // namespace KXP
