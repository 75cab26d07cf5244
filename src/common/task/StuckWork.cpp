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
    struct Outcome {
        WorkEnd end;
        std::exception_ptr thrown;
    };
    const auto outcome = std::make_shared<Outcome>();
    std::thread thread;
    try {
        thread = std::thread([work, outcome, owner]() mutable {
            NameLibraryThread("END");
            try {
                work();
            } catch (...) {
                outcome->thrown = std::current_exception();
            }
            work = nullptr;
            outcome->end.Report();
            owner.reset();
        });
    } catch (const std::exception&) {
        work();
        return true;
    }
    if (!outcome->end.Await(progress, limit)) {
        AbandonThread(std::move(thread));
        return false;
    }
    thread.join();
    if (outcome->thrown) std::rethrow_exception(outcome->thrown);
    return true;
}

bool BoundedLook::Run(const std::function<void()>& look, std::shared_ptr<void> owner) {
    if (!underWay_.expired()) return false;
    const auto token = std::make_shared<char>();
    underWay_ = token;
    static const std::atomic<uint64_t> none{0};
    return RunUnlessStuck([token, look] { look(); }, none, std::move(owner));
}

}  // namespace KXP
