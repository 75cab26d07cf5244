#include "common/task/TaskQueue.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "common/task/AbandonedThreads.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

// Fixed times far before any real one, so that these entries are always due and run ahead of everything
// enqueued for "now": first the commands of the life cycle, counted up from 0, then tasks and finishes.
constexpr TimePoint kTaskTime{std::chrono::nanoseconds(1000000)};

int64_t Nanoseconds(TimePoint when) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count();
}

}  // namespace

TaskQueue::TaskQueue(std::string name, Clock& clock)
    : name_(std::move(name)), clock_(clock), queue_(std::make_shared<TimedNotificationQueue>(clock)) {}

TaskQueue::~TaskQueue() {
    if (!stopRequested_) RequestStop();
    Join();
}

bool TaskQueue::Start() {
    stopRequested_ = false;
    queue_->RefuseNothing();
    thread_ = std::thread([this] { WorkerThread(); });
    return true;
}

void TaskQueue::StopAndJoin() {
    RequestStop();
    Join();
}

void TaskQueue::RequestStop() {
    EnqueueCommand([this] { Stop(); });
}

void TaskQueue::Join() {
    if (thread_.joinable()) thread_.join();
    Abandon();
}

TimePoint TaskQueue::NextCommandTime() {
    return TimePoint(std::chrono::nanoseconds(nextCommandTime_++));
}

TimePoint TaskQueue::Now() {
    const int64_t now = Nanoseconds(clock_.Now());
    int64_t last = lastTime_.load();
    int64_t next = 0;
    do {
        next = now > last ? now : last + 1;
    } while (!lastTime_.compare_exchange_weak(last, next));
    return TimePoint(std::chrono::nanoseconds(next));
}

void TaskQueue::LogEscaped() {
    KXP_LOG(LogFailure, "Exception left a task queue entry: %s", ToStr(ExceptionToRetVal()).c_str());
}

void TaskQueue::AssertOnWorker() const {
    const std::thread::id worker = workerId_.load();
    if (worker == std::thread::id() || worker == std::this_thread::get_id()) return;
    KXP_LOG(LogFailure, "%s: code of the worker thread runs elsewhere", name_.c_str());
#ifndef NDEBUG
    std::abort();
#endif
}

void TaskQueue::WorkerThread() {
    LogNameThread(GetLibraryName().c_str(), "TASK");
    KXP_LOG(LogMilestone, "%s worker thread started", name_.c_str());
    while (Step()) {
    }
    KXP_LOG(LogMilestone, "%s Worker thread stopped", name_.c_str());
}

bool TaskQueue::Step() {
    workerId_ = std::this_thread::get_id();
    if (stopRequested_ && pendingFutures_.empty() && pendingTasks_.empty() && held_.empty()) return false;
    const auto entry = queue_->WaitDequeueNotification(stopRequested_ ? kStallTimeoutMs : 0);
    if (!entry) {
        KXP_LOG(LogFailure, "%s experienced a timeout waiting for action: %d", name_.c_str(), 1);
        KXP_LOG(LogFailure, "%s appears to be stalled. Exiting task queue to avoid hanging the application.",
                name_.c_str());
        return false;
    }
    entry->Execute();
    return true;
}

void TaskQueue::Stop() {
    stopRequested_ = true;
    // An entry due in ten minutes, say the time limit of a request, must not keep the application waiting.
    queue_->RefuseLaterThan(std::chrono::milliseconds(kStallTimeoutMs));
    for (const auto& [key, task] : pendingTasks_)
        Cancel(*task);
}

void TaskQueue::Cancel(ITask& task) {
    try {
        task.CancelTask();
    } catch (...) {
        LogEscaped();
    }
}

void TaskQueue::ExecuteAsync(std::function<TaskStatus()> fn, const TimePoint& when, const std::string& name) {
    EnqueueAsync({name.empty() ? GenerateGUID() : name, ++lastRun_}, std::move(fn), when);
}

void TaskQueue::ExecuteTask(ITask* task, const TimePoint& when) {
    if (!task) {
        KXP_LOG(LogFailure, "NULL task passed in");
        throw Exception(Code::kFailure, "NULL task passed in", 0);
    }
    std::shared_ptr<ITask> shared(task);
    const RunKey key{task->identifier(), ++lastRun_};
    EnqueueNotification(kTaskTime, [this, key, shared = std::move(shared), when] {
        pendingTasks_[key] = shared;
        if (stopRequested_) Cancel(*shared);
        EnqueueAsync(
            key, [this, shared] { return shared->ExecuteTask(*this); }, when);
    });
}

void TaskQueue::FinishAsync(const std::string& name) {
    EnqueueNotification(kTaskTime, [this, name] { FinishNamed(name); });
}

void TaskQueue::FinishAsync(const ITask& task) {
    EnqueueNotification(kTaskTime, [this, task = &task, name = task.identifier()] {
        for (const auto& [key, pending] : pendingTasks_) {
            if (pending.get() != task) continue;
            FinishPending(RunKey(key));
            return;
        }
        KXP_LOG(LogFailure, "Could not find async task [%s]", name.c_str());
    });
}

void TaskQueue::EnqueueAsync(RunKey key, AsyncFunction fn, TimePoint when) {
    EnqueueNotification(when, [this, key = std::move(key), fn = std::move(fn)]() mutable {
        StartOrHold(key, std::move(fn));
    });
}

void TaskQueue::StartOrHold(const RunKey& key, AsyncFunction fn) {
    KXP_LOG(LogTrace, "Track pending async task %s", key.first.c_str());
    if (runningThreads_ >= kMaxAsyncThreads) {
        held_.emplace_back(key, std::move(fn));
        return;
    }
    StartAsync(key, std::move(fn));
}

void TaskQueue::StartAsync(const RunKey& key, AsyncFunction fn) {
    // Nothing of this object is touched by the thread once it has enqueued its end; that entry runs on the
    // worker, and so only while this object lives.
    auto body = [this, key, fn = std::move(fn), queue = queue_, owner = owner_.lock()]() mutable {
        LogNameThread(GetLibraryName().c_str(), key.first.c_str());
        TaskStatus status = TaskStatusDone;
        try {
            status = fn();
        } catch (...) {
            LogEscaped();
        }
        fn = nullptr;  // before the end is enqueued, so that the worker destroys the task
        auto end = [this, key, status] {
            if (status == TaskStatusPending) {
                Release(key);
            } else {
                Finish(key);
            }
        };
        queue->EnqueueNotification(kTaskTime, std::make_unique<Notification<decltype(end)>>(std::move(end)));
    };
    std::thread& thread = pendingFutures_[key];
    try {
        thread = StartThread(std::move(body));
        ++runningThreads_;
    } catch (const std::exception& error) {
        KXP_LOG(LogFailure, "No thread for async task %s: %s", key.first.c_str(), error.what());
        const auto task = pendingTasks_.find(key);
        if (task != pendingTasks_.end()) task->second->FailTask(ExceptionToRetVal());
        Retire(key);
    }
}

void TaskQueue::StartHeld() {
    // A start that fails leaves its place to the next, hence a loop.
    while (!held_.empty() && runningThreads_ < kMaxAsyncThreads) {
        auto [key, fn] = std::move(held_.front());
        held_.pop_front();
        StartAsync(key, std::move(fn));
    }
}

void TaskQueue::JoinThread(std::thread& thread) {
    if (!thread.joinable()) return;
    thread.join();
    --runningThreads_;
}

void TaskQueue::Release(const RunKey& key) {
    const auto future = pendingFutures_.find(key);
    if (future == pendingFutures_.end()) return;
    JoinThread(future->second);
    StartHeld();
}

void TaskQueue::FinishNamed(const std::string& name) {
    const auto first = pendingFutures_.lower_bound({name, 0});
    const auto end = pendingFutures_.upper_bound({name, std::numeric_limits<uint64_t>::max()});
    if (first == end) {
        KXP_LOG(LogFailure, "Could not find async task [%s]", name.c_str());
        return;
    }
    // A run without a thread has said Pending and waits for just this.
    const auto waiting = std::find_if(first, end, [](const auto& run) { return !run.second.joinable(); });
    FinishPending(RunKey(waiting != end ? waiting->first : std::prev(end)->first));
}

void TaskQueue::FinishPending(const RunKey& key) {
    // The call may come from inside the function that is yet to say Pending.
    const auto future = pendingFutures_.find(key);
    if (future != pendingFutures_.end()) JoinThread(future->second);
    Finish(key);
}

void TaskQueue::Finish(const RunKey& key) {
    KXP_LOG(LogTrace, "Finish async task %s", key.first.c_str());
    if (pendingFutures_.count(key) == 0) {
        KXP_LOG(LogFailure, "Could not find async task [%s]", key.first.c_str());
        return;
    }
    Retire(key);
    StartHeld();
}

void TaskQueue::Retire(const RunKey& key) {
    const auto task = pendingTasks_.find(key);
    if (task != pendingTasks_.end()) {
        try {
            task->second->FinishTask();
        } catch (...) {
            LogEscaped();
        }
        pendingTasks_.erase(task);
    }
    // Its thread has ended or is just ending.
    const auto future = pendingFutures_.find(key);
    JoinThread(future->second);
    pendingFutures_.erase(future);
}

void TaskQueue::Abandon() {
    // What still runs is now owned by its thread alone and ends there, while the owner is whole.
    std::vector<std::thread> running;
    for (auto& [key, thread] : pendingFutures_)
        if (thread.joinable()) running.push_back(std::move(thread));
    AbandonThreads(std::move(running));
    pendingFutures_.clear();
    pendingTasks_.clear();
    held_.clear();
    queue_->Clear();
}

}  // namespace KXP
