#include "gallery-host/base/Input.h"

#include <cerrno>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "gallery-host/base/Failure.h"

namespace host {
namespace {

void CheckLength(size_t bytes, const std::string& name) {
    if (bytes > kMaxInputBytes)
        throw Failure(kExitUsage, name + " is longer than " + std::to_string(kMaxInputBytes) + " bytes");
}

}  // namespace

bool ReadSome(int descriptor, const std::string& name, std::string& bytes) {
    bytes.resize(size_t{64} << 10);
    const ssize_t got = read(descriptor, bytes.data(), bytes.size());
    const int error = errno;
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    if (got < 0 && error != EINTR && error != EAGAIN)
        throw Failure(kExitUsage, "cannot read " + name + ": " + std::strerror(error));
    return got != 0;
}

std::string ReadAll(int descriptor, const std::string& name, Interrupt& interrupt) {
    std::string all;
    std::string some;
    for (;;) {
        pollfd fds[] = {{interrupt.fd(), POLLIN, 0}, {descriptor, POLLIN, 0}};
        const int ready = poll(fds, 2, -1);
        if (interrupt.Take()) throw Failure(kExitInterrupted, "interrupted");
        if (ready <= 0) continue;
        if (!ReadSome(descriptor, name, some)) return all;
        all += some;
        CheckLength(all.size(), name);
    }
}

std::string ReadFile(const std::string& path, Interrupt& interrupt) {
    // Without O_NONBLOCK, open would wait for a pipe's writer and ignore interrupts; ReadAll waits and heeds
    // them.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) throw Failure(kExitUsage, "cannot read " + path + ": " + std::strerror(errno));
    const std::shared_ptr<void> closer(nullptr, [descriptor](void*) { close(descriptor); });
    return ReadAll(descriptor, path, interrupt);
}

}  // namespace host
