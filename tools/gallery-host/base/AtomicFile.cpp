#include "gallery-host/base/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "gallery-host/base/Failure.h"

namespace host {
namespace {

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) bytes.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

// The mode of a file that open creates with 0666.
mode_t OrdinaryMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// 0, or the error.
int Fill(int descriptor, std::string_view bytes) {
    const bool good =
        WriteAll(descriptor, bytes) && fchmod(descriptor, OrdinaryMode()) == 0 && fsync(descriptor) == 0;
    const int error = good ? 0 : errno;
    return close(descriptor) != 0 && error == 0 ? errno : error;
}

}  // namespace

void WriteFileAtomically(const std::string& path, std::string_view bytes) {
    const auto fail = [&](const std::string& why) {
        throw Failure(kExitFailed, "cannot write " + path + ": " + why);
    };
    struct stat there {};
    if (stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) fail("it is not an ordinary file");
    std::string temporary = path.substr(0, path.rfind('/') + 1) + ".gallery-host-XXXXXX";
    const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) fail(std::strerror(errno));
    int error = Fill(descriptor, bytes);
    if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
    if (error == 0) return;
    unlink(temporary.c_str());
    fail(std::strerror(error));
}

}  // namespace host
