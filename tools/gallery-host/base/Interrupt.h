// Ctrl-C, SIGTERM and SIGHUP as something to poll for.
//
// Handlers write to a pipe. Blocking the signals and reading them elsewhere would do as well here, but the
// programs that the plug-in starts would inherit the blocked mask and could not be ended by SIGTERM; handlers
// vanish with exec. SIGPIPE gets an empty handler for the same reason.
#pragma once

#include <array>
#include <csignal>

namespace host {

// One at a time. A signal that the parent had ignored stays ignored.
class Interrupt {
  public:
    Interrupt();   // throws Failure when the system has no descriptors left
    ~Interrupt();  // puts back what was there
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Readable while a signal has come that was not taken.
    int fd() const { return pipe_[0]; }
    // True when a signal came since the last call.
    bool Take();
    // How many signals were taken: more than one means that the user has lost patience.
    int taken() const { return taken_; }

  private:
    void Handle(int signal, void (*handler)(int));

    struct Previous {
        int signal = 0;  // 0: untouched
        struct sigaction action {};
    };
    int pipe_[2] = {-1, -1};
    std::array<Previous, 4> previous_;
    size_t handled_ = 0;
    int taken_ = 0;
};

}  // namespace host
