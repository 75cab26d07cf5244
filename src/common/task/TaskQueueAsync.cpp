// Asynchronous functions and tasks. A lack of memory fails the one that it meets, and nothing else.
#include <algorithm>
#include <limits>

#include "CobalixUtil.h"
#include "common/results/Exception.h"
#include "common/task/TaskQueue.h"
#include "common/text/TextUtil.h"

namespace KXP {

void TaskQueue::ExecuteAsync(std::function<TaskStatus()> fn, const TimePoint& when, const std::string& name) {
    EnqueueAsync({SlabString(name.empty() ? GenerateGUID() : name), ++lastRun_}, std::move(fn), when);
}

void TaskQueue::ExecuteTask(ITask* task, const TimePoint& when) {
    if (!task) {
        KXP_LOG(LogFailure, "NULL task passed in");
        throw Exception(Code::kFailure, "NULL task passed in", 0);
    }
    std::shared_ptr<ITask> shared(task, std::default_delete<ITask>(), SlabAllocator<ITask>());
    const RunKey key{task->identifier(), ++lastRun_};
    EnqueueNotification(kTaskTime,
                        [this, key, shared = std::move(shared), when] { KeepTask(key, shared, when); });
}

void TaskQueue::KeepTask(const RunKey& key, const std::shared_ptr<ITask>& task, TimePoint when) {
    pendingTasks_[key] = task;
    if (stopRequested_) Cancel(*task);
    try {
        EnqueueAsync(
            key, [this, alive = task.get()] { return alive->ExecuteTask(*this); }, when);
    } catch (...) {
        FailCaught(key);
    }
}

void TaskQueue::FinishAsync(const std::string& name) {
    EnqueueNotification(kTaskTime, [this, name] { FinishNamed(name); });
}

void TaskQueue::FinishAsync(const ITask& task) {
    EnqueueNotification(kTaskTime, [this, task = &task, name = task.identifier()] {
        for (const auto& [key, pending] : pendingTasks_) {
            if (pending.get() == task) return FinishPending(key);
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
    if (runningThreads_ < kMaxAsyncThreads) return StartAsync(key, std::move(fn));
    try {
        held_.emplace_back(key, std::move(fn));
    } catch (...) {
        FailCaught(key);
    }
}

// Enqueued by the thread of a function as its last act.
class TaskQueue::RunEnd : public TimedNotificationQueue::Notification {
  public:
    RunEnd(TaskQueue& queue, RunKey key) : queue_(queue), key_(std::move(key)) {}
    void SetStatus(TaskStatus status) { status_ = status; }
    void Execute() override {
        try {
            status_ == TaskStatusPending ? queue_.Release(key_) : queue_.Finish(key_);
        } catch (...) {
            LogEscaped();
        }
    }

  private:
    TaskQueue& queue_;
    const RunKey key_;
    TaskStatus status_ = TaskStatusDone;
};

// What the thread of a function has. Its end and the place for it in the queue are made before it starts,
// because a thread without memory could report to nobody.
struct TaskQueue::Run {
    Run(TaskQueue& queue, const RunKey& key, AsyncFunction function, std::shared_ptr<ITask> itsTask)
        : task(std::move(itsTask)),
          fn(std::move(function)),
          owner(queue.Owner()),
          entries(queue.queue_),
          library(queue.library_),
          name(key.first),
          end(std::make_unique<RunEnd>(queue, key)) {
        entries->Reserve();
    }
    ~Run() {
        if (end) entries->GiveBackReserved();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    std::shared_ptr<ITask> task;  // null for a mere function; `fn` uses it
    AsyncFunction fn;
    const std::shared_ptr<void> owner;
    const std::shared_ptr<TimedNotificationQueue> entries;
    const std::string library;
    const SlabString name;
    std::unique_ptr<RunEnd> end;
};

void TaskQueue::StartAsync(const RunKey& key, AsyncFunction fn) {
    try {
        std::thread& thread = pendingFutures_[key];
        const auto task = pendingTasks_.find(key);
        thread = StartThread([run = std::make_shared<Run>(
                                  *this, key, std::move(fn),
                                  task != pendingTasks_.end() ? task->second : nullptr)] { Execute(*run); });
        ++runningThreads_;
    } catch (const std::exception& error) {
        KXP_LOG(LogFailure, "No thread for async task %s: %s", key.first.c_str(), error.what());
        FailCaught(key);
    }
}

// Nothing of the queue's owner is touched by the thread once it has enqueued its end; that entry runs on the
// worker, and so only while the queue lives.
void TaskQueue::Execute(Run& run) noexcept {
    LogNameThread(run.library.c_str(), run.name.c_str());
    try {
        run.end->SetStatus(run.fn());
    } catch (...) {
        LogEscaped();
    }
    run.fn = nullptr;
    run.task.reset();  // before the end is enqueued, so that the worker destroys the task
    run.entries->EnqueueReserved(kTaskTime, std::move(run.end));
}

// Inside a catch block.
void TaskQueue::FailCaught(const RunKey& key) {
    const auto task = pendingTasks_.find(key);
    if (task != pendingTasks_.end()) {
        try {
            task->second->FailTask(ExceptionToRetVal());
        } catch (...) {
            LogEscaped();
        }
    }
    Retire(key);
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
    const SlabString slabName(name);
    const auto first = pendingFutures_.lower_bound({slabName, 0});
    const auto end = pendingFutures_.upper_bound({slabName, std::numeric_limits<uint64_t>::max()});
    if (first == end) {
        KXP_LOG(LogFailure, "Could not find async task [%s]", name.c_str());
        return;
    }
    // A run without a thread has said Pending and waits for just this.
    const auto waiting = std::find_if(first, end, [](const auto& run) { return !run.second.joinable(); });
    FinishPending(waiting != end ? waiting->first : std::prev(end)->first);
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

// `key` may be the one in a map.
void TaskQueue::Retire(const RunKey& key) {
    const auto task = pendingTasks_.find(key);
    const auto future = pendingFutures_.find(key);
    if (task != pendingTasks_.end()) {
        try {
            task->second->FinishTask();
        } catch (...) {
            LogEscaped();
        }
        pendingTasks_.erase(task);
    }
    if (future == pendingFutures_.end()) return;
    // Its thread has ended or is just ending.
    JoinThread(future->second);
    pendingFutures_.erase(future);
}

}  // namespace KXP
