#include "gallery-host/Input.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <poll.h>
#include <unistd.h>

#include "gallery-host/Failure.h"

namespace host {
namespace {

void CheckLength(size_t bytes, const std::string& name) {
    if (bytes > kMaxInputBytes)
        throw Failure(kExitUsage, name + " is longer than " + std::to_string(kMaxInputBytes) + " bytes");
}

}  // namespace

bool ReadSome(std::string& bytes) {
    bytes.resize(size_t{64} << 10);
    const ssize_t got = read(STDIN_FILENO, bytes.data(), bytes.size());
    const int error = errno;
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    if (got < 0 && error != EINTR && error != EAGAIN)
        throw Failure(kExitFailed, std::string("cannot read standard input: ") + std::strerror(error));
    return got != 0;
}

std::string ReadStandardInput(Interrupt& interrupt) {
    std::string all;
    std::string some;
    for (;;) {
        pollfd fds[] = {{interrupt.fd(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        const int ready = poll(fds, 2, -1);
        if (interrupt.Take()) throw Failure(kExitInterrupted, "interrupted");
        if (ready <= 0) continue;
        if (!ReadSome(some)) return all;
        all += some;
        CheckLength(all.size(), "standard input");
    }
}

std::string ReadFile(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string all;
    std::string some(size_t{64} << 10, '\0');
    while (file && (file.read(some.data(), static_cast<std::streamsize>(some.size())), file.gcount() > 0)) {
        all.append(some, 0, static_cast<size_t>(file.gcount()));
        CheckLength(all.size(), path);
    }
    if (!file.eof()) throw Failure(kExitUsage, "cannot read " + path + ": " + std::strerror(errno));
    return all;
}

}  // namespace host
