#include "tests/host/ChildProcess.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMs = 60000;

struct Pipe {
    int read = -1;
    int write = -1;
};

Pipe MakePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
    return {ends[0], ends[1]};
}

}  // namespace

void ChildProcess::Close(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Options& options) {
    signal(SIGPIPE, SIG_IGN);
    Pipe in = MakePipe();
    Pipe output = MakePipe();
    Pipe error = MakePipe();
    // What this process ignores, SIGPIPE above all, would be ignored by the child.
    std::vector<std::string> words = {"env", "--default-signal", "-u", "NO_COLOR"};
    words.insert(words.end(), options.environment.begin(), options.environment.end());
    words.push_back(options.program);
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers(words.size() + 1);
    std::transform(words.begin(), words.end(), pointers.begin(),
                   [](std::string& word) { return word.data(); });
    pid_ = fork();
    if (pid_ == 0) {
        dup2(in.read, STDIN_FILENO);
        dup2(output.write, STDOUT_FILENO);
        dup2(error.write, STDERR_FILENO);
        execvp("env", pointers.data());
        _exit(127);
    }
    Close(in.read);
    Close(output.write);
    Close(error.write);
    in_ = in.write;
    out_ = output.read;
    err_ = error.read;
    if (pid_ < 0) throw std::runtime_error("cannot start gallery-host");
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Close(in_);
    Close(out_);
    Close(err_);
}

void ChildProcess::Write(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const ssize_t written = write(in_, text.data() + at, text.size() - at);
        if (written < 0) throw std::runtime_error("the child reads no more");
        at += static_cast<size_t>(written);
    }
}

int ChildProcess::Wait() {
    Close(in_);
    while (ReadOnce()) {
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool ChildProcess::ReadUntil(const std::string& stream, const std::string& text) {
    while (stream.find(text) == std::string::npos)
        if (!ReadOnce()) return false;
    return true;
}

bool ChildProcess::ReadOnce() {
    if (out_ < 0 && err_ < 0) return false;
    if (ReadWithin(kPatienceMs)) return true;
    ADD_FAILURE() << "gallery-host is silent; so far: " << out << err;
    kill(pid_, SIGKILL);
    return false;
}

bool ChildProcess::ReadWithin(int milliseconds) {
    // poll passes over the descriptors that are closed.
    pollfd fds[] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    if (poll(fds, 2, milliseconds) <= 0) return false;
    const auto take = [](short events, int& fd, std::string& into) {
        char bytes[65536];
        if (events == 0) return;
        const ssize_t got = read(fd, bytes, sizeof bytes);
        if (got > 0)
            into.append(bytes, static_cast<size_t>(got));
        else
            Close(fd);
    };
    take(fds[0].revents, out_, out);
    take(fds[1].revents, err_, err);
    return true;
}
