#include "gallery-host/Output.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <poll.h>
#include <unistd.h>

#include "gallery-host/Failure.h"
#include "gallery-host/Printable.h"

namespace host {

bool Output::Write(std::string_view data) {
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
    std::fwrite(ended.data(), 1, ended.size(), stderr);
}

bool WantsColour() {
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    if (noColor && *noColor) return false;
    if (terminal && std::strcmp(terminal, "dumb") == 0) return false;
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace host
