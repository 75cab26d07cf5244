#include "base/ReadWrite.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace KXP {

long ReadSome(DescriptorRef file, char* buffer, size_t size) {
    for (;;) {
        const ssize_t got = read(file.get(), buffer, size);
        if (got >= 0 || errno != EINTR) return got;
    }
}

size_t ReadAt(DescriptorRef file, uint64_t position, void* buffer, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t got = pread(file.get(), static_cast<char*>(buffer) + done, size - done,
                                  static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got == 0) errno = 0;
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

bool WriteFully(DescriptorRef file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = write(file.get(), bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(put));
    }
    return true;
}

bool WriteFullyAt(DescriptorRef file, const char* bytes, size_t size, uint64_t offset) {
    while (size > 0) {
        const ssize_t put = pwrite(file.get(), bytes, size, static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        bytes += put;
        offset += static_cast<uint64_t>(put);
        size -= static_cast<size_t>(put);
    }
    return true;
}

void TakeBack(DescriptorRef file, uint64_t size) {
    const int error = errno;
    const bool cut = ftruncate(file.get(), static_cast<off_t>(size)) == 0;
    (void)cut;
    errno = error;
}

bool ReadWhole(DescriptorRef file, size_t limit, FileBytes& content) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0) return false;
    const auto size = static_cast<size_t>(status.st_size);
    if (size > limit) {
        errno = EFBIG;
        return false;
    }
    // Left unset: clearing a large buffer costs as much as reading into it.
    content.bytes.reset(static_cast<char*>(AllocateInSlab(size + FileBytes::kSlack)));
    content.size = 0;
    while (content.size < size) {
        const long got = ReadSome(file, &content.bytes[content.size], size - content.size);
        if (got < 0) return false;
        if (got == 0) break;
        content.size += static_cast<size_t>(got);
    }
    std::fill_n(&content.bytes[content.size], FileBytes::kSlack, '\0');
    return true;
}

}  // namespace KXP
