#include "gallery-host/base/Interrupt.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

#include "base/DescriptorCalls.h"
#include "gallery-host/base/Failure.h"

namespace host {
namespace {

// The write end of the pipe; a signal handler has no other way to find it.
volatile std::sig_atomic_t pipeForHandlers = -1;

void OnSignal(int) {
    const int savedErrno = errno;
    const char byte = 0;
    // If the pipe is full, it is readable already.
    [[maybe_unused]] const ssize_t written = write(pipeForHandlers, &byte, 1);
    errno = savedErrno;
}

void OnBrokenPipe(int) {}

}  // namespace

Interrupt::Interrupt() {
    if (!KXP::Platform::OpenPipe(readable_, writable_))
        throw Failure(kExitFailed, std::string("cannot make a pipe: ") + std::strerror(errno));
    pipeForHandlers = writable_.get();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        Handle(signal, OnSignal);
    Handle(SIGPIPE, OnBrokenPipe);
}

Interrupt::~Interrupt() {
    for (const Previous& previous : previous_)
        if (previous.signal) sigaction(previous.signal, &previous.action, nullptr);
    pipeForHandlers = -1;
}

bool Interrupt::Take() {
    char bytes[64];
    const int before = taken_;
    ssize_t got = 0;
    while ((got = read(readable_.get(), bytes, sizeof bytes)) > 0)
        taken_ += static_cast<int>(got);
    return taken_ > before;
}

void Interrupt::Handle(int signal, void (*handler)(int)) {
    Previous previous;
    previous.signal = signal;
    sigaction(signal, nullptr, &previous.action);
    if (previous.action.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = handler;
    // The signal may interrupt a system call on one of the plug-in's threads.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
    previous_[handled_++] = previous;
}

}  // namespace host
