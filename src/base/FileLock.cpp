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

bool LockWithin(DescriptorRef file, int kind, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (flock(file.get(), kind | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

FileLock::FileLock(const std::string& path, std::chrono::milliseconds limit)
    : file_(OpenForWrite(path, kLockFileMode)) {
    if (!file_.IsOpen() || LockWithin(file_, LOCK_EX, limit)) return;
    const int error = errno;
    file_.Close();
    errno = error;
}

}  // namespace KXP
