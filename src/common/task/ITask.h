// What a task queue runs on a thread of its own.
#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "base/SlabMemory.h"
#include "common/results/RetVal.h"

namespace KXP {

class TaskQueue;

// How an asynchronous function ended. Pending: something else completes it and calls TaskQueue::FinishAsync
// later.
enum TaskStatus { TaskStatusDone = 0, TaskStatusPending = 1 };

class ITask : public InSlab {
  public:
    virtual ~ITask() = default;

    // The work, on the task's own thread.
    virtual TaskStatus ExecuteTask(TaskQueue& queue) = 0;
    // The end of the work, on the queue's worker, after which the task is destroyed.
    virtual void FinishTask() = 0;
    // Asks the work to end soon, because the queue stops. Called on the worker, before ExecuteTask or while
    // it is running.
    virtual void CancelTask() {}
    // Called on the worker instead of ExecuteTask when no thread could be started; FinishTask follows.
    virtual void FailTask(const RetVal& reason) = 0;

    // The name under which the queue keeps the task.
    const SlabString& identifier() const { return identifier_; }

  protected:
    explicit ITask(std::string_view identifier) : identifier_(identifier) {}
    ITask(const ITask&) = delete;
    ITask& operator=(const ITask&) = delete;

  private:
    const SlabString identifier_;
};

// Makes a closure that owns move-only state fit for a std::function, whose copies share the one closure.
template <typename F>
auto make_copyable(F&& closure) {
    auto shared = std::make_shared<std::decay_t<F>>(std::forward<F>(closure));
    return [shared](auto&&... arguments) -> decltype(auto) {
        return (*shared)(std::forward<decltype(arguments)>(arguments)...);
    };
}

}  // namespace KXP
