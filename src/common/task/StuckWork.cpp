#include "common/task/StuckWork.h"

#include <exception>
#include <thread>
#include <utility>

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/task/AbandonedThreads.h"

namespace KXP {

void WorkEnd::Report() {
    MutexLock lock(mutex_);
    ended_ = true;
    changed_.NotifyAll();
}

bool WorkEnd::Await(const std::atomic<uint64_t>& progress, std::chrono::milliseconds limit) {
    MutexLock lock(mutex_);
    uint64_t seen = progress;
    auto until = std::chrono::steady_clock::now() + limit;
    while (!ended_) {
        changed_.WaitUntil(mutex_, until);
        if (ended_ || std::chrono::steady_clock::now() < until) continue;
        const uint64_t now = progress;
        if (std::exchange(seen, now) == now) return false;
        until = std::chrono::steady_clock::now() + limit;
    }
    return true;
}

bool RunUnlessStuck(std::function<void()> work, const std::atomic<uint64_t>& progress,
                    std::shared_ptr<void> owner, std::chrono::milliseconds limit) {
    const auto end = std::make_shared<WorkEnd>();
    std::thread thread;
    try {
        thread = std::thread([work, end, owner]() mutable {
            NameLibraryThread("END");
            work();
            work = nullptr;
            end->Report();
            owner.reset();
        });
    } catch (const std::exception&) {
        work();
        return true;
    }
    if (end->Await(progress, limit)) {
        thread.join();
        return true;
    }
    AbandonThread(std::move(thread));
    return false;
}

}  // namespace KXP
