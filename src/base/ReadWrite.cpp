#include "base/ReadWrite.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace KXP {
namespace {

// Each system takes at least so many.
constexpr size_t kMostPartsAtOnce = 16;

// Takes the first `size` bytes from the parts, of which `next` is the first that is not empty.
void PassOver(std::vector<iovec>& parts, size_t& next, size_t size) {
    while (size > 0) {
        iovec& part = parts[next];
        const size_t taken = std::min(size, part.iov_len);
        part = {static_cast<char*>(part.iov_base) + taken, part.iov_len - taken};
        size -= taken;
        if (part.iov_len == 0) ++next;
    }
}

}  // namespace

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

bool WriteFullyAt(DescriptorRef file, const std::vector<std::string_view>& parts, uint64_t offset) {
    std::vector<iovec> rest;
    for (const std::string_view part : parts)
        if (!part.empty()) rest.push_back({const_cast<char*>(part.data()), part.size()});
    for (size_t next = 0; next < rest.size();) {
        const auto count = static_cast<int>(std::min(rest.size() - next, kMostPartsAtOnce));
        const ssize_t put = pwritev(file.get(), &rest[next], count, static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        offset += static_cast<uint64_t>(put);
        PassOver(rest, next, static_cast<size_t>(put));
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
