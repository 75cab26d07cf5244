// A program run beside ours, in a process group of its own: whatever it starts ends with it. It gets no input
// and none of our descriptors; its output is read line by line.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "base/FileDescriptor.h"
#include "common/threads/Mutex.h"

namespace KXP {

class ChildProcess {
  public:
    using OnLine = std::function<void(std::string_view)>;

    // Starts the program. Throws std::system_error when it cannot be started.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    // Kills it if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Waits until the program has ended, even if its output is still open, then kills what its group still
    // runs; not so in a host that ignores or reaps its children, where the group's number may be another's by
    // then. Calls `onLine` on this thread with each line printed, cut to kMaxLine bytes. May be called once.
    void Wait(const OnLine& onLine) EXCLUDES(mutex_);

    // Asks the group to end; the waiting thread kills what has not ended after `grace`. Any thread, any
    // number of times: the earliest time holds.
    void Terminate(std::chrono::milliseconds grace) EXCLUDES(mutex_);

    static constexpr size_t kMaxLine = 4096;

  private:
    // The output that is not yet a whole line.
    class Output;

    void Signal(int signal) REQUIRES(mutex_);
    int MillisecondsToKill() EXCLUDES(mutex_);
    bool HasEnded() EXCLUDES(mutex_);
    void Reap() EXCLUDES(mutex_);

    FileDescriptor output_;     // what it prints
    FileDescriptor exited_;     // readable once it has ended; closed when it had ended before this was opened
    FileDescriptor wakeUp_[2];  // wakes the waiting thread when a time to kill is set
    Mutex mutex_;
    pid_t pid_ GUARDED_BY(mutex_) = -1;  // -1 once it is reaped: the number may then be another's
    bool terminating_ GUARDED_BY(mutex_) = false;
    std::chrono::steady_clock::time_point killAt_ GUARDED_BY(mutex_);
};

}  // namespace KXP
