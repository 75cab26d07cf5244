// Ctrl-C, SIGTERM and SIGHUP as something to poll for.
//
// Handlers write to a pipe. Blocked signals and a signalfd would work here too, but programs that the plug-in
// starts would inherit the mask, and SIGTERM could not end them; exec resets handlers. SIGPIPE has an empty
// handler for the same reason.
#pragma once

#include <array>
#include <csignal>

#include "base/FileDescriptor.h"

namespace host {

// Only one may exist at a time. A signal that the parent process ignored stays ignored.
class Interrupt {
  public:
    Interrupt();   // throws Failure when the system has no descriptors left
    ~Interrupt();  // restores the previous handlers
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Readable while there are signals to take.
    int fd() const { return readable_.get(); }
    // True if a signal has come since the last call.
    bool Take();
    // How many signals have come: after the second, the program leaves without waiting.
    int taken() const { return taken_; }

  private:
    void Handle(int signal, void (*handler)(int));

    struct Previous {
        int signal = 0;  // 0: untouched
        struct sigaction action {};
    };
    KXP::FileDescriptor readable_;
    KXP::FileDescriptor writable_;
    std::array<Previous, 4> previous_;
    size_t handled_ = 0;
    int taken_ = 0;
};

}  // namespace host
