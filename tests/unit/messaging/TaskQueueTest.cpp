#include <functional>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "common/Exception.h"
#include "common/plugincommon/task/TaskQueue.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"

using KXP::TaskQueue;
using KXP::TaskStatus;
using std::chrono::seconds;

namespace {

struct TestTask : KXP::ITask {
    explicit TestTask(const std::string& name) : ITask(name) {}
    ~TestTask() override {
        if (destroyed) destroyed->Add();
    }
    TaskStatus ExecuteTask(TaskQueue&) override { return execute ? execute() : KXP::TaskStatusDone; }
    void FinishTask() override {
        if (finished) finished->Add();
    }
    void CancelTask() override {
        if (cancelled) cancelled->Add();
    }
    void FailTask(const KXP::RetVal& value) override { failure = value.text; }

    std::function<TaskStatus()> execute;
    Counter* finished = nullptr;
    Counter* cancelled = nullptr;
    Counter* destroyed = nullptr;
    std::string failure;
};

}  // namespace

TEST(TaskQueue, RunsInOrderOfTimeWithCommandsAheadOfAll) {
    FakeClock clock;
    TaskQueue queue("test", clock);
    std::string order;
    const auto note = [&](char mark) { return [&order, mark] { order += mark; }; };
    queue.EnqueueNotification(queue.Now() + seconds(10), note('d'));
    for (const char mark : {'a', 'b', 'c'})
        queue.EnqueueNotification(queue.Now(), note(mark));
    queue.EnqueueCommand(note('1'));
    queue.EnqueueCommand(note('2'));
    queue.EnqueueNotification(queue.Now(), [] { throw KXP::Exception(1, "ends here", 0); });
    for (int i = 0; i < 7; ++i)
        ASSERT_TRUE(queue.Step());
    EXPECT_EQ(order, "12abcd");
    EXPECT_GE(clock.Now().time_since_epoch(), seconds(3610));
}

TEST(TaskQueue, StopNeitherWaitsForALaterEntryNorTakesOne) {
    FakeClock clock;
    TaskQueue queue("test", clock);
    int ran = 0;
    queue.EnqueueNotification(queue.Now() + seconds(10), [&] { ++ran; });
    queue.RequestStop();
    EXPECT_TRUE(queue.Step());
    EXPECT_FALSE(queue.Step());
    EXPECT_EQ(ran, 0);
    EXPECT_LT(clock.Now().time_since_epoch(), seconds(3601));
}

TEST(TaskQueue, AStalledTaskHoldsTheStopForASecondAtMost) {
    LogCapture log;
    // Never destroyed: the thread of the late task may be abandoned before it tells its end.
    static FakeClock& clock = *new FakeClock;
    const auto start = clock.Now();
    TaskQueue queue("stuck", clock);
    Counter finished;
    Counter cancelled;
    Counter destroyed;
    auto* task = new TestTask("forever");
    task->execute = [] { return KXP::TaskStatusPending; };
    task->finished = &finished;
    task->cancelled = &cancelled;
    task->destroyed = &destroyed;
    queue.ExecuteTask(task, queue.Now());
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(queue.Step());  // kept, started, its thread released
    queue.EnqueueNotification(queue.Now() + seconds(3000), [] { FAIL() << "was dropped at the stop"; });
    queue.RequestStop();
    ASSERT_TRUE(queue.Step());
    queue.EnqueueNotification(queue.Now() + seconds(3000), [] { FAIL() << "came too late"; });
    Counter lateCancelled;
    auto* late = new TestTask("late");
    late->cancelled = &lateCancelled;
    queue.ExecuteTask(late, queue.Now());
    ASSERT_TRUE(queue.Step());
    EXPECT_EQ(lateCancelled.Get(), 1) << "comes behind the stop";
    while (queue.Step()) {
    }
    EXPECT_EQ(cancelled.Get(), 1);
    EXPECT_EQ((clock.Now() - start) / seconds(1), 1);
    EXPECT_TRUE(log.HasLine(1, "stuck experienced a timeout waiting for action: 1"));
    EXPECT_TRUE(
        log.HasLine(1, "stuck appears to be stalled. Exiting task queue to avoid hanging the application."));
    queue.StopAndJoin();
    EXPECT_EQ(finished.Get(), 0);
    EXPECT_EQ(destroyed.Get(), 1);
}

TEST(TaskQueue, APendingTaskStaysUntilItIsFinished) {
    LogCapture log;
    FakeClock clock;
    TaskQueue queue("test", clock);
    Counter finished;
    Counter destroyed;
    auto* task = new TestTask("later");
    task->execute = [] { return KXP::TaskStatusPending; };
    task->finished = &finished;
    task->destroyed = &destroyed;
    queue.ExecuteTask(task, queue.Now());
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(queue.Step());
    queue.FinishAsync("unknown");
    ASSERT_TRUE(queue.Step());
    EXPECT_TRUE(log.HasLine(1, "Could not find async task [unknown]"));
    EXPECT_EQ(finished.Get() + destroyed.Get(), 0);
    queue.FinishAsync("later");
    ASSERT_TRUE(queue.Step());
    EXPECT_EQ(finished.Get(), 1);
    EXPECT_EQ(destroyed.Get(), 1);
}

TEST(TaskQueue, TwoTasksOfOneNameEachFinishOnce) {
    TaskQueue queue("test");
    queue.Start();
    Counter running;
    Counter go;
    Counter firstFinished;
    Counter secondFinished;
    auto* first = new TestTask("same");
    first->finished = &firstFinished;
    first->execute = [&] {
        running.Add();
        EXPECT_TRUE(go.WaitFor(1));
        return KXP::TaskStatusDone;
    };
    queue.ExecuteTask(first, queue.Now());
    ASSERT_TRUE(running.WaitFor(1));
    auto* second = new TestTask("same");
    second->finished = &secondFinished;
    queue.ExecuteTask(second, queue.Now());
    ASSERT_TRUE(secondFinished.WaitFor(1));
    EXPECT_EQ(firstFinished.Get(), 0);
    go.Add();
    ASSERT_TRUE(firstFinished.WaitFor(1));
    queue.StopAndJoin();
    EXPECT_EQ(firstFinished.Get(), 1);
    EXPECT_EQ(secondFinished.Get(), 1);
}

TEST(TaskQueue, ManyFunctionsShareABoundedNumberOfThreads) {
    constexpr int kFunctions = 600;
    TaskQueue queue("test");
    queue.Start();
    Counter started;
    Counter go;
    Counter ended;
    for (int i = 0; i < kFunctions; ++i)
        queue.ExecuteAsync(
            [&] {
                started.Add();
                EXPECT_TRUE(go.WaitFor(1));
                ended.Add();
                return KXP::TaskStatusDone;
            },
            queue.Now(), "");
    ASSERT_TRUE(started.WaitFor(TaskQueue::kMaxAsyncThreads));
    Counter settled;
    queue.EnqueueNotification(queue.Now(), [&] { settled.Add(); });
    ASSERT_TRUE(settled.WaitFor(1));  // the worker has seen every function by now
    EXPECT_EQ(started.Get(), static_cast<int>(TaskQueue::kMaxAsyncThreads));
    go.Add();
    EXPECT_TRUE(ended.WaitFor(kFunctions));
    queue.StopAndJoin();
}

TEST(TaskQueue, ATaskWithoutAThreadFailsAndFinishes) {
    struct NoThreads : TaskQueue {
        using TaskQueue::TaskQueue;
        std::thread StartThread(std::function<void()>) override {
            throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
        }
    };
    struct Recorded : TestTask {
        explicit Recorded(std::string& text) : TestTask("t"), text_(text) {}
        void FinishTask() override { text_ = failure; }
        std::string& text_;
    };
    LogCapture log;
    FakeClock clock;
    NoThreads queue("test", clock);
    std::string failure;
    queue.ExecuteTask(new Recorded(failure), queue.Now());
    queue.ExecuteAsync([] { return KXP::TaskStatusDone; }, queue.Now(), "function");
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(queue.Step());
    EXPECT_NE(failure.find("unavailable"), std::string::npos) << failure;
    queue.RequestStop();
    EXPECT_TRUE(queue.Step());
    EXPECT_FALSE(queue.Step()) << "nothing is pending";
}

TEST(TaskQueue, ThreadsThatRunOutFailHeldTasksOneByOne) {
    // The first threads are had, then none any more, with a long queue behind them.
    struct FewThreads : TaskQueue {
        using TaskQueue::TaskQueue;
        std::thread StartThread(std::function<void()> body) override {
            if (++started > kMaxAsyncThreads)
                throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
            return TaskQueue::StartThread(std::move(body));
        }
        size_t started = 0;
    };
    constexpr int kTasks = 40000;
    LogCapture log;
    FewThreads queue("test");
    Counter finished;
    Counter go;
    for (int i = 0; i < kTasks; ++i) {
        auto* task = new TestTask("task");
        task->finished = &finished;
        task->execute = [&] {
            EXPECT_TRUE(go.WaitFor(1));
            return KXP::TaskStatusDone;
        };
        queue.ExecuteTask(task, queue.Now());
    }
    queue.Start();
    Counter settled;
    queue.EnqueueNotification(queue.Now(), [&] { settled.Add(); });
    ASSERT_TRUE(settled.WaitFor(1));
    go.Add();
    EXPECT_TRUE(finished.WaitFor(kTasks));
    queue.StopAndJoin();
}

TEST(TaskQueue, AnAbandonedTaskKeepsItsOwnerAndIsNotHeard) {
    LogCapture log;
    Counter running;
    Counter go;
    Counter finished;
    Counter destroyed;
    Counter ownerGone;
    {
        std::shared_ptr<void> owner(nullptr, [&](void*) { ownerGone.Add(); });
        TaskQueue queue("test");
        queue.SetOwner(owner);
        queue.Start();
        auto* task = new TestTask("slow");
        task->finished = &finished;
        task->destroyed = &destroyed;
        task->execute = [&] {
            running.Add();
            EXPECT_TRUE(go.WaitFor(1));
            return KXP::TaskStatusDone;
        };
        queue.ExecuteTask(task, queue.Now());
        ASSERT_TRUE(running.WaitFor(1));
        queue.StopAndJoin();
        EXPECT_TRUE(log.Has("appears to be stalled"));
    }
    EXPECT_EQ(destroyed.Get() + ownerGone.Get(), 0);
    go.Add();
    EXPECT_TRUE(ownerGone.WaitFor(1));
    EXPECT_EQ(destroyed.Get(), 1);
    EXPECT_EQ(finished.Get(), 0);
}

TEST(TaskQueue, ANullTaskIsRefused) {
    LogCapture log;
    TaskQueue queue("test");
    try {
        queue.ExecuteTask(nullptr, queue.Now());
        FAIL() << "took it";
    } catch (const KXP::Exception& error) {
        EXPECT_EQ(static_cast<uint32_t>(error.code()), 0x80004005u);
        EXPECT_EQ(error.message(), "NULL task passed in");
    }
    EXPECT_TRUE(log.HasLine(1, "NULL task passed in"));
}
