#include "libraries/ovnx-media/SourceFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>

#include "base/ReadWrite.h"
#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {

SourceFile::SourceFile(int fd) : fd_(fd) {
    struct stat status {};
    if (fstat(fd, &status) != 0) throw Failure(OVNX_MEDIA_UNREADABLE, "no open file");
    if (!S_ISREG(status.st_mode)) throw Failure(OVNX_MEDIA_UNREADABLE, "not a regular file");
    size_ = static_cast<uint64_t>(status.st_size);
}

size_t SourceFile::ReadAt(uint64_t position, char* bytes, size_t size) noexcept {
    // An offset beyond the known size may not fit the kernel's type.
    if (position >= size_) return 0;
    size = static_cast<size_t>(std::min<uint64_t>(size, size_ - position));
    const size_t got = KXP::ReadAt(fd_, position, bytes, size);
    if (got < size && errno != 0) hasFailed_ = true;
    return got;
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
