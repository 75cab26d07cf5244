#include "libraries/ovnx-media/SourceFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {

SourceFile::SourceFile(int fd) : fd_(fd) {
    struct stat status {};
    if (fstat(fd, &status) != 0) throw Failure(OVNX_MEDIA_UNREADABLE, "no open file");
    if (!S_ISREG(status.st_mode)) throw Failure(OVNX_MEDIA_UNREADABLE, "not a regular file");
    size_ = static_cast<uint64_t>(status.st_size);
}

size_t SourceFile::ReadAt(uint64_t position, char* bytes, size_t size) noexcept {
    size_t done = 0;
    // Beyond the known size an offset may not fit the kernel's type.
    while (done < size && position + done < size_) {
        const ssize_t got = pread(fd_, bytes + done, size - done, static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) hasFailed_ = true;
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

bool SourceReader::Read(void* bytes, size_t size) noexcept {
    auto* next = static_cast<char*>(bytes);
    for (size_t wanted = size; wanted > 0;) {
        size_t got = TakeHeld(next, wanted);
        if (got == 0 && wanted >= buffer_.size()) {
            got = file_.ReadAt(position_, next, wanted);
            position_ += got;
        } else if (got == 0) {
            heldFrom_ = position_;
            held_ = file_.ReadAt(position_, buffer_.data(), buffer_.size());
            got = TakeHeld(next, wanted);
        }
        if (got == 0) return false;
        next += got;
        wanted -= got;
    }
    return true;
}

size_t SourceReader::TakeHeld(char* bytes, size_t size) noexcept {
    if (position_ < heldFrom_ || position_ - heldFrom_ >= held_) return 0;
    const auto from = static_cast<size_t>(position_ - heldFrom_);
    const size_t taken = std::min(size, held_ - from);
    std::memcpy(bytes, buffer_.data() + from, taken);
    position_ += taken;
    return taken;
}

}  // namespace ovnxmedia
