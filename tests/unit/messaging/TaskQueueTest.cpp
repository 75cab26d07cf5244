#include <functional>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "common/results/Exception.h"
#include "common/task/TaskQueue.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"

using KXP::TaskQueue;
using KXP::TaskStatus;
using std::chrono::seconds;

namespace {

// What became of the tasks that share it.
struct Course {
    Counter running, go, finished, cancelled, destroyed;
    std::string failure;

    // For a task that runs until `go`.
    TaskStatus Wait() {
        running.Add();
        EXPECT_TRUE(go.WaitFor(1));
        return KXP::TaskStatusDone;
    }
};

struct TestTask : KXP::ITask {
    TestTask(const std::string& name, Course& itsCourse, std::function<TaskStatus()> toExecute)
        : ITask(name), course(itsCourse), execute(std::move(toExecute)) {}
    ~TestTask() override { course.destroyed.Add(); }
    TaskStatus ExecuteTask(TaskQueue&) override { return execute(); }
    void FinishTask() override { course.finished.Add(); }
    void CancelTask() override { course.cancelled.Add(); }
    void FailTask(const KXP::RetVal& value) override { course.failure = value.text; }

    Course& course;
    const std::function<TaskStatus()> execute;
};

TaskStatus Pend() {
    return KXP::TaskStatusPending;
}

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

TEST(TaskQueue, AStalledTaskHoldsTheStopForASecondAtMost) {
    LogCapture log;
    // Never destroyed: the thread of the late task may be abandoned before it reports its end.
    static FakeClock& clock = *new FakeClock;
    static Course& late = *new Course;
    const auto start = clock.Now();
    TaskQueue queue("stuck", clock);
    Course course;
    queue.ExecuteTask(new TestTask("forever", course, Pend), queue.Now());
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(queue.Step());  // kept, started, its thread released
    queue.EnqueueNotification(queue.Now() + seconds(3000), [] { FAIL() << "was dropped at the stop"; });
    queue.RequestStop();
    ASSERT_TRUE(queue.Step());
    queue.EnqueueNotification(queue.Now() + seconds(3000), [] { FAIL() << "came too late"; });
    queue.ExecuteTask(new TestTask("late", late, Pend), queue.Now());
    ASSERT_TRUE(queue.Step());
    EXPECT_EQ(late.cancelled.Get(), 1) << "comes after the stop";
    while (queue.Step()) {
    }
    EXPECT_EQ(course.cancelled.Get(), 1);
    EXPECT_EQ((clock.Now() - start) / seconds(1), 1);
    EXPECT_TRUE(log.HasLine(1, "stuck experienced a timeout waiting for action: 1"));
    EXPECT_TRUE(
        log.HasLine(1, "stuck appears to be stalled. Exiting task queue to avoid hanging the application."));
    queue.StopAndJoin();
    EXPECT_EQ(course.finished.Get(), 0);
    EXPECT_EQ(course.destroyed.Get(), 1);
}

TEST(TaskQueue, TwoTasksOfOneNameEachFinishOnce) {
    TaskQueue queue("test");
    queue.Start();
    Course first;
    Course second;
    queue.ExecuteTask(new TestTask("same", first, [&] { return first.Wait(); }), queue.Now());
    ASSERT_TRUE(first.running.WaitFor(1));
    queue.ExecuteTask(new TestTask("same", second, [] { return KXP::TaskStatusDone; }), queue.Now());
    ASSERT_TRUE(second.finished.WaitFor(1));
    EXPECT_EQ(first.finished.Get(), 0);
    first.go.Add();
    queue.StopAndJoin();
    EXPECT_EQ(first.finished.Get(), 1);
    EXPECT_EQ(second.finished.Get(), 1);
}

TEST(TaskQueue, ManyTasksShareABoundedNumberOfThreadsAndFailWhenTheseRunOut) {
    // So many tasks are held after the first threads that no recursion would survive.
    struct FewThreads : TaskQueue {
        using TaskQueue::TaskQueue;
        std::thread StartThread(std::function<void()> body) override {
            if (++started > kMaxAsyncThreads + 300)
                throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
            return TaskQueue::StartThread(std::move(body));
        }
        size_t started = 0;
    } queue("test");
    constexpr int kTasks = 40000;
    LogCapture log;
    Course course;
    for (int i = 0; i < kTasks; ++i)
        queue.ExecuteTask(new TestTask("task", course, [&] { return course.Wait(); }), queue.Now());
    queue.Start();
    ASSERT_TRUE(course.running.WaitFor(TaskQueue::kMaxAsyncThreads));
    Counter settled;
    queue.EnqueueNotification(queue.Now(), [&] { settled.Add(); });
    ASSERT_TRUE(settled.WaitFor(1));  // the worker has seen every task by now
    EXPECT_EQ(course.running.Get(), static_cast<int>(TaskQueue::kMaxAsyncThreads));
    course.go.Add();
    EXPECT_TRUE(course.finished.WaitFor(kTasks));
    queue.StopAndJoin();
    EXPECT_EQ(course.running.Get(), static_cast<int>(TaskQueue::kMaxAsyncThreads) + 300);
    EXPECT_NE(course.failure.find("unavailable"), std::string::npos) << course.failure;
}
