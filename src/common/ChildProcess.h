// A program run beside ours, in a process group of its own: whatever it starts ends with it. It gets no input
// and none of our descriptors; what it prints comes line by line.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "base/FileDescriptor.h"
#include "common/Mutex.h"

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

    // Until it has ended, whether or not its output has; what its group still runs is then killed, unless the
    // host ignores or reaps its children, when the group's number may be another's by then. Hands over each
    // line that it prints, cut to kMaxLine bytes, on this thread. Once.
    void Wait(const OnLine& onLine) EXCLUDES(mutex_);

    // Asks it to end; what has not ended after `grace` is killed by whoever waits. Any thread, any number of
    // times: the earliest end holds.
    void Terminate(std::chrono::milliseconds grace) EXCLUDES(mutex_);

    static constexpr size_t kMaxLine = 4096;

  private:
    // What is left of a line, and of the lines.
    class Output;

    void Signal(int signal) REQUIRES(mutex_);
    int MillisecondsToKill() EXCLUDES(mutex_);
    bool HasEnded() EXCLUDES(mutex_);
    void Reap() EXCLUDES(mutex_);

    FileDescriptor output_;     // what it prints
    FileDescriptor exited_;     // can be read once it has ended; closed when it had before we could look
    FileDescriptor wakeUp_[2];  // tells the waiting thread that there is a time to kill
    Mutex mutex_;
    pid_t pid_ GUARDED_BY(mutex_) = -1;  // -1 once it is reaped: the number may be another's then
    bool terminating_ GUARDED_BY(mutex_) = false;
    std::chrono::steady_clock::time_point killAt_ GUARDED_BY(mutex_);
};

}  // namespace KXP
