#include "common/FileDescriptor.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace KXP {
namespace {

FileDescriptor OpenRegular(const std::string& path, int flags, mode_t mode, struct stat& status) {
    // The system would take the text before a zero byte, which is another file.
    if (path.find('\0') != std::string::npos) {
        errno = EINVAL;
        return {};
    }
    // Without O_NONBLOCK the opening of a pipe waits for its other end.
    FileDescriptor file(open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode));
    if (!file.IsOpen()) return file;
    if (fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)) return file;
    file.Close();
    errno = EINVAL;
    return file;
}

}  // namespace

bool FileDescriptor::Close() {
    if (fd_ < 0) return true;
    // Not retried: after EINTR the descriptor is gone and its number may be another thread's.
    return close(std::exchange(fd_, -1)) == 0 || errno == EINTR;
}

FileDescriptor OpenForRead(const std::string& path, struct stat& status) {
    return OpenRegular(path, O_RDONLY, 0, status);
}

FileDescriptor OpenForRead(const std::string& path, uint64_t* size) {
    struct stat status {};
    FileDescriptor file = OpenForRead(path, status);
    if (size) *size = static_cast<uint64_t>(status.st_size);
    return file;
}

FileDescriptor OpenForWrite(const std::string& path, unsigned mode) {
    struct stat status {};
    return OpenRegular(path, O_WRONLY | O_CREAT, static_cast<mode_t>(mode), status);
}

FileDescriptor OpenForUpdate(const std::string& path, uint64_t* size) {
    struct stat status {};
    FileDescriptor file = OpenRegular(path, O_RDWR, 0, status);
    if (size) *size = static_cast<uint64_t>(status.st_size);
    return file;
}

long ReadSome(const FileDescriptor& file, char* buffer, size_t size) {
    for (;;) {
        const ssize_t got = read(file.get(), buffer, size);
        if (got >= 0 || errno != EINTR) return got;
    }
}

size_t ReadAt(const FileDescriptor& file, uint64_t position, char* buffer, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t got =
            pread(file.get(), buffer + done, size - done, static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

bool WriteFullyAt(const FileDescriptor& file, const char* bytes, size_t size, size_t offset) {
    while (size > 0) {
        const ssize_t put = pwrite(file.get(), bytes, size, static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        bytes += put;
        offset += static_cast<size_t>(put);
        size -= static_cast<size_t>(put);
    }
    return true;
}

bool ReadWhole(const FileDescriptor& file, size_t limit, FileBytes& content) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0) return false;
    const auto size = static_cast<size_t>(status.st_size);
    if (size > limit) {
        errno = EFBIG;
        return false;
    }
    // Left unset, unlike make_unique's: clearing a large buffer costs as much as reading into it.
    content.bytes.reset(new char[size + FileBytes::kSlack]);
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
