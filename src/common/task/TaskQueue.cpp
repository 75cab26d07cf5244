#include "common/task/TaskQueue.h"

#include <cstdlib>

#include "CobalixUtil.h"
#include "common/product/Profile.h"
#include "common/results/Exception.h"
#include "common/task/AbandonedThreads.h"

namespace KXP {
namespace {

int64_t Nanoseconds(TimePoint when) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count();
}

}  // namespace

TaskQueue::TaskQueue(std::string name, Clock& clock)
    : name_(std::move(name)),
      library_(GetLibraryName()),
      clock_(clock),
      queue_(std::make_shared<TimedNotificationQueue>(clock)) {}

TaskQueue::~TaskQueue() {
    // Without a worker there is nobody to stop, and a request takes memory.
    if (!stopRequested_ && thread_.joinable()) RequestStop();
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

void TaskQueue::LogEscaped() noexcept {
    try {
        KXP_LOG(LogFailure, "Exception left a task queue entry: %s", ToStr(ExceptionToRetVal()).c_str());
    } catch (...) {
        KXP_LOG(LogFailure, "Exception left a task queue entry, and there is no memory to describe it");
    }
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
    NameLibraryThread("TASK");
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
    ++progress_;
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

void TaskQueue::Abandon() {
    // What still runs is now owned by its thread alone and ends there, while the owner is whole.
    for (auto& [key, thread] : pendingFutures_)
        if (thread.joinable()) AbandonThread(std::move(thread));
    pendingFutures_.clear();
    pendingTasks_.clear();
    held_.clear();
    queue_->Clear();
}

}  // namespace KXP
