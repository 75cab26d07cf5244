#include "gallery-host/base/Output.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <poll.h>
#include <unistd.h>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"

namespace host {
namespace {

bool statusShown = false;

bool IsDumbTerminal() {
    const char* terminal = std::getenv("TERM");
    return terminal && std::strcmp(terminal, "dumb") == 0;
}

}  // namespace

bool Output::Write(std::string_view data) {
    ClearStatus();
    while (open_ && !data.empty()) {
        pollfd fds[] = {{interrupt_.fd(), POLLIN, 0}, {STDOUT_FILENO, POLLOUT, 0}};
        if (poll(fds, 2, -1) < 0 && errno != EINTR)
            throw Failure(kExitFailed,
                          std::string("cannot wait for standard output: ") + std::strerror(errno));
        if (interrupt_.Take()) throw Failure(kExitInterrupted, "interrupted");
        if (fds[1].revents == 0) continue;
        // A pipe that is ready takes this much without blocking.
        const ssize_t written =
            write(STDOUT_FILENO, data.data(), std::min(data.size(), static_cast<size_t>(PIPE_BUF)));
        if (written >= 0) {
            data.remove_prefix(static_cast<size_t>(written));
        } else if (errno == EPIPE) {
            open_ = false;
        } else if (errno != EINTR && errno != EAGAIN) {
            throw Failure(kExitFailed,
                          std::string("cannot write to standard output: ") + std::strerror(errno));
        }
    }
    return open_;
}

void Say(std::string_view text) {
    SayRaw("gallery-host: " + std::string(text));
}

void SayRaw(std::string_view line) {
    const std::string ended = Printable(line) + "\n";
    ClearStatus();
    std::fwrite(ended.data(), 1, ended.size(), stderr);
}

void ShowStatus(std::string_view line) {
    const std::string drawn = "\r" + Printable(line) + "\x1b[K";
    std::fwrite(drawn.data(), 1, drawn.size(), stderr);
    statusShown = true;
}

void ClearStatus() {
    if (!statusShown) return;
    std::fputs("\r\x1b[K", stderr);
    statusShown = false;
}

bool TakesStatus() {
    return isatty(STDERR_FILENO) == 1 && !IsDumbTerminal();
}

bool WantsColour() {
    const char* noColor = std::getenv("NO_COLOR");
    if (noColor && *noColor) return false;
    return isatty(STDOUT_FILENO) == 1 && !IsDumbTerminal();
}

}  // namespace host
