#include "common/system/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "common/system/System.h"

namespace KXP {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How often to check for the end, in milliseconds, where no descriptor reports it.
constexpr int kLook = 20;

[[noreturn]] void Fail(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

void MakePipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    int ends[2];
    if (pipe(ends) != 0) Fail(errno, "pipe");
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    // A program that another thread starts right here gets them, which does no harm: nobody waits for a
    // pipe's end.
    for (const int end : ends)
        (void)fcntl(end, F_SETFD, FD_CLOEXEC);
    (void)fcntl(ends[0], F_SETFL, O_NONBLOCK);
}

class SpawnSettings {
  public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    void UseStreams(int output) {
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO);
    }

    // Its own group, the signals as a program expects them, and no descriptor but the three.
    void Isolate() {
        sigset_t all;
        sigset_t none;
        sigfillset(&all);
        sigemptyset(&none);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setsigmask(&attributes_, &none);
        const int flags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags | Platform::kSpawnCloses));
        Platform::CloseOtherDescriptors(&actions_);
    }

    pid_t Spawn(const std::string& program, const std::vector<std::string>& arguments) const {
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        pid_t pid = -1;
        const int error =
            posix_spawn(&pid, program.c_str(), &actions_, &attributes_, argv.data(), Platform::Environment());
        if (error != 0) Fail(error, program.c_str());
        return pid;
    }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

}  // namespace

class ChildProcess::Output {
  public:
    explicit Output(const OnLine& onLine) : onLine_(onLine) {}

    // Takes what there is; false at its end.
    bool Read(const FileDescriptor& file) {
        char block[4096];
        const ssize_t got = read(file.get(), block, sizeof(block));
        if (got <= 0) return got < 0 && (errno == EAGAIN || errno == EINTR);
        for (const char c : std::string_view(block, static_cast<size_t>(got)))
            Take(c);
        return true;
    }

    void Flush() {
        if (!line_.empty()) onLine_(line_);
        line_.clear();
    }

  private:
    void Take(char c) {
        if (c == '\n')
            Flush();
        else if (line_.size() < kMaxLine)
            line_ += c;
    }

    const OnLine& onLine_;
    std::string line_;
};

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
    MakePipe(wakeUp_[0], wakeUp_[1]);
    FileDescriptor printed;
    MakePipe(output_, printed);
    SpawnSettings settings;
    settings.UseStreams(printed.get());
    settings.Isolate();
    const MutexLock lock(mutex_);
    pid_ = settings.Spawn(program, arguments);
    exited_ = FileDescriptor(Platform::OpenExitDescriptor(pid_));
}

ChildProcess::~ChildProcess() {
    {
        const MutexLock lock(mutex_);
        Signal(SIGKILL);
    }
    Reap();
}

void ChildProcess::Signal(int signal) {
    // The group, with the number of its first process: that one is not reaped, so the number is no other's.
    if (pid_ > 0) (void)kill(-pid_, signal);
}

void ChildProcess::Terminate(milliseconds grace) {
    const MutexLock lock(mutex_);
    if (pid_ < 0) return;
    const steady_clock::time_point killAt = steady_clock::now() + grace;
    killAt_ = terminating_ ? std::min(killAt_, killAt) : killAt;
    terminating_ = true;
    Signal(SIGTERM);
    (void)!write(wakeUp_[1].get(), "", 1);
}

// Kills the group when the time has come. Otherwise the time left, or -1 when none is set.
int ChildProcess::MillisecondsToKill() {
    const MutexLock lock(mutex_);
    if (!terminating_) return -1;
    const auto left = std::chrono::ceil<milliseconds>(killAt_ - steady_clock::now());
    if (left.count() > 0) return static_cast<int>(std::min<int64_t>(left.count(), INT_MAX));
    Signal(SIGKILL);
    return -1;
}

bool ChildProcess::HasEnded() {
    const MutexLock lock(mutex_);
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0)
        return info.si_pid != 0;
    if (errno == EINTR) return false;
    // A host that ignores SIGCHLD leaves nothing to wait for: no such child is one that has ended, and its
    // number may be another's.
    pid_ = -1;
    return true;
}

void ChildProcess::Wait(const OnLine& onLine) {
    Output output(onLine);
    bool printing = true;
    while (!HasEnded()) {
        pollfd watched[] = {{exited_.get(), POLLIN, 0},
                            {wakeUp_[0].get(), POLLIN, 0},
                            {printing ? output_.get() : -1, POLLIN, 0}};
        int patience = MillisecondsToKill();
        if (!exited_.IsOpen()) patience = patience < 0 ? kLook : std::min(patience, kLook);
        (void)poll(watched, 3, patience);
        if (watched[1].revents != 0) {
            char byte = 0;
            (void)!read(wakeUp_[0].get(), &byte, 1);
        }
        if (watched[2].revents != 0) printing = output.Read(output_);
    }
    // No more than a pipe holds, because a process of the group may go on printing into it.
    for (int block = 0; block < 16 && printing; ++block) {
        pollfd rest{output_.get(), POLLIN, 0};
        printing = poll(&rest, 1, 0) > 0 && output.Read(output_);
    }
    output.Flush();
    {
        const MutexLock lock(mutex_);
        Signal(SIGKILL);
    }
    Reap();
}

void ChildProcess::Reap() {
    const MutexLock lock(mutex_);
    if (pid_ < 0) return;
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
}

}  // namespace KXP
