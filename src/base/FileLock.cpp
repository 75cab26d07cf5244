#include "base/FileLock.h"

#include <cerrno>
#include <thread>

#include <sys/file.h>

namespace KXP {
namespace {

constexpr unsigned kLockFileMode = 0600;
// The system cannot wait for a lock and for a time.
constexpr std::chrono::milliseconds kPause{2};

}  // namespace

FileLock::FileLock(const std::string& path, std::chrono::milliseconds limit)
    : file_(OpenForWrite(path, kLockFileMode)) {
    if (!file_.IsOpen()) return;
    const auto end = std::chrono::steady_clock::now() + limit;
    while (flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(kPause);
            continue;
        }
        const int error = errno;
        file_.Close();
        errno = error;
        return;
    }
}

}  // namespace KXP
