#include "common/InputFileStream.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KXP {

ifstream::~ifstream() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool ifstream::open(const std::string& path) {
    // The system would take the text before a zero byte, which is another file.
    if (path.find('\0') != std::string::npos) return false;
    // Without O_NONBLOCK the opening of a pipe waits for a writer.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor_ < 0) return false;
    struct stat status = {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        size_ = static_cast<uint64_t>(status.st_size);
        return true;
    }
    ::close(descriptor_);
    descriptor_ = -1;
    return false;
}

size_t ifstream::read_at(uint64_t position, char* out, size_t count) {
    if (descriptor_ < 0 || position >= size_) return 0;
    // Cut at the known size: the call that would only find the end of the file is saved.
    count = static_cast<size_t>(std::min<uint64_t>(count, size_ - position));
    size_t done = 0;
    while (done < count) {
        const ssize_t got =
            ::pread(descriptor_, out + done, count - done, static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

}  // namespace KXP
