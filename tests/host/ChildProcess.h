// gallery-host as a child process with pipes on its three streams. Every wait has a bound and fails the test.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include <sys/types.h>

class ChildProcess {
  public:
    struct Options {
        std::vector<std::string> environment;  // "NAME=value", over this process's own
        std::string program = GALLERY_HOST;
    };

    ChildProcess(const std::vector<std::string>& arguments, const Options& options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Write(const std::string& text);
    void CloseOutput() { Close(out_); }
    void Signal(int signal) { kill(pid_, signal); }
    // Read until the stream has shown `text`; false at its end.
    bool ReadOutUntil(const std::string& text) { return ReadUntil(out, text); }
    bool ReadErrUntil(const std::string& text) { return ReadUntil(err, text); }
    // Waits until there is more to read, but no longer than this, and reads it; false when nothing came.
    bool ReadWithin(int milliseconds);
    // Closes the input, reads to the end and returns the exit status, or the negative number of a signal.
    int Wait();

    std::string out;  // what was read so far
    std::string err;

  private:
    static void Close(int& fd);
    bool ReadUntil(const std::string& stream, const std::string& text);
    bool ReadOnce();

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
};
