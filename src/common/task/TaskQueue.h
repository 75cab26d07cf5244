// One worker thread that runs entries in the order of their times, and a thread for each asynchronous
// function. All state of a module that messages touch is touched on the worker, which is what lets handlers
// run without locks of their own.
#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "common/task/ITask.h"
#include "common/task/TimedNotificationQueue.h"

namespace KXP {

class TaskQueue {
  public:
    // At most this many asynchronous functions have a thread at once; the rest wait for one in their order.
    static constexpr size_t kMaxAsyncThreads = 256;
    // After a stop, this much silence ends the worker although tasks are pending.
    static constexpr int kStallTimeoutMs = 1000;

    explicit TaskQueue(std::string name, Clock& clock = Clock::Steady());
    // Stops and joins the worker if nobody has.
    virtual ~TaskQueue();
    TaskQueue(const TaskQueue&) = delete;
    TaskQueue& operator=(const TaskQueue&) = delete;

    // Makes the worker. Starting over a running one is a program error.
    bool Start();
    // On the thread that starts and stops it.
    bool IsStarted() const { return thread_.joinable(); }

    // Lets the worker end once nothing is pending, or after a second of silence, and joins it. Functions that
    // still run then are abandoned: they keep alive what they use, and their end is ignored. Not from the
    // worker.
    void StopAndJoin();

    // The first half of StopAndJoin, which a test steps through.
    void RequestStop();

    // Grows with each entry that the worker has run. Any thread.
    const std::atomic<uint64_t>& progress() const { return progress_; }
    // For the steps of whoever ends the queue's owner.
    void NoteProgress() { ++progress_; }

    // Enqueues a closure of no arguments for the worker. What it throws is logged and goes no further.
    template <typename F>
    void EnqueueNotification(TimePoint when, F&& closure) {
        queue_->EnqueueNotification(
            when, std::make_unique<Notification<std::decay_t<F>>>(std::forward<F>(closure)));
    }

    // The same with a tag, by which NextDueIs recognises entries of one kind.
    template <typename F>
    void EnqueueTagged(TimePoint when, const void* tag, F&& closure) {
        queue_->EnqueueNotification(
            when, std::make_unique<Notification<std::decay_t<F>>>(std::forward<F>(closure), tag));
    }

    // Whether the entry that would run next, right now, has this tag: many entries of one kind can then share
    // the cost of their work.
    bool NextDueIs(const void* tag) { return queue_->TagOfNextDue() == tag; }

    // Enqueues a command of the life cycle: these run ahead of everything else, in their order.
    template <typename F>
    void EnqueueCommand(F&& closure) {
        EnqueueNotification(NextCommandTime(), std::forward<F>(closure));
    }

    // The time now, but never the same twice: entries made with it keep the order of the calls.
    TimePoint Now();

    // Runs `fn` on a thread of its own from time `when` on; an empty name stands for a new GUID. What it
    // throws is dropped.
    void ExecuteAsync(std::function<TaskStatus()> fn, const TimePoint& when, const std::string& name);

    // Takes ownership of the task and runs it under its identifier. Throws KXP::Exception for a null task.
    void ExecuteTask(ITask* task, const TimePoint& when);

    // Ends a function or task that has returned TaskStatusPending, or is about to. Of several under one name
    // it ends the first that has returned Pending, or else the latest; the second form names one of them.
    void FinishAsync(const std::string& name);
    void FinishAsync(const ITask& task);

    // What asynchronous functions use and must find alive, also when they are abandoned: each of their
    // threads holds it. Set before Start.
    void SetOwner(std::weak_ptr<void> owner) { owner_ = std::move(owner); }
    // The same for other threads that may be abandoned; null without one.
    std::shared_ptr<void> Owner() const { return owner_.lock(); }

    // Called first in code that only the worker may run: elsewhere it logs, and ends a debug build.
    void AssertOnWorker() const;

    // The body of the worker's loop, for tests that drive a queue without a thread: runs the next entry.
    // False when the worker would end.
    bool Step();

  protected:
    // Throws std::system_error when no thread can be started.
    virtual std::thread StartThread(std::function<void()> body) { return std::thread(std::move(body)); }

  private:
    // Fixed times far before any real one, so that these entries are always due and run ahead of everything
    // enqueued for "now": first the commands of the life cycle, counted up from 0, then tasks and their ends.
    static constexpr TimePoint kTaskTime{std::chrono::nanoseconds(1000000)};

    struct Run;
    class RunEnd;

    // Two runs may share a name, as two requests may share an identifier; each has a number of its own.
    using RunKey = std::pair<SlabString, uint64_t>;
    using AsyncFunction = std::function<TaskStatus()>;

    template <typename F>
    class Notification : public TimedNotificationQueue::Notification {
      public:
        explicit Notification(F closure, const void* tag = nullptr)
            : closure_(std::move(closure)), tag_(tag) {}
        void Execute() override {
            try {
                closure_();
            } catch (...) {
                LogEscaped();
            }
        }
        const void* Tag() const override { return tag_; }

      private:
        F closure_;
        const void* tag_;
    };
    static void LogEscaped() noexcept;

    TimePoint NextCommandTime();
    void WorkerThread();
    void Stop();
    static void Cancel(ITask& task);
    void Join();
    void KeepTask(const RunKey& key, const std::shared_ptr<ITask>& task, TimePoint when);
    void EnqueueAsync(RunKey key, AsyncFunction fn, TimePoint when);
    void StartOrHold(const RunKey& key, AsyncFunction fn);
    void StartAsync(const RunKey& key, AsyncFunction fn);
    static void Execute(Run& run) noexcept;
    void StartHeld();
    void FailCaught(const RunKey& key);
    void Finish(const RunKey& key);
    void FinishPending(const RunKey& key);
    void FinishNamed(const std::string& name);
    void Retire(const RunKey& key);
    void Release(const RunKey& key);
    void JoinThread(std::thread& thread);
    void Abandon();

    const std::string name_;
    const std::string library_;  // for the names of threads
    Clock& clock_;
    std::weak_ptr<void> owner_;
    // Shared with the threads of asynchronous functions, which may outlive this object.
    const std::shared_ptr<TimedNotificationQueue> queue_;
    std::atomic<int64_t> lastTime_{0};
    std::atomic<int64_t> nextCommandTime_{0};
    std::atomic<uint64_t> lastRun_{0};
    std::atomic<uint64_t> progress_{0};
    std::atomic<bool> stopRequested_{false};
    std::atomic<std::thread::id> workerId_{};
    std::thread thread_;

    // Worker only. A future of std::async would join in its destructor, and so could hang the worker's way
    // out; hence plain threads.
    std::map<RunKey, std::thread> pendingFutures_;
    template <typename T>
    using ByRun = std::map<RunKey, T, std::less<RunKey>, SlabAllocator<std::pair<const RunKey, T>>>;
    ByRun<std::shared_ptr<ITask>> pendingTasks_;
    using Held = std::pair<RunKey, AsyncFunction>;
    std::deque<Held, SlabAllocator<Held>> held_;
    size_t runningThreads_ = 0;
};

}  // namespace KXP
