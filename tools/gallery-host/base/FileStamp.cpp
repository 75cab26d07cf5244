#include "gallery-host/base/FileStamp.h"

#include <tuple>

#include <sys/stat.h>

#include "base/FileCalls.h"

namespace host {

FileStamp::FileStamp(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return;
    device_ = static_cast<uint64_t>(status.st_dev);
    file_ = status.st_ino;
    size_ = status.st_size;
    const timespec time = KXP::Platform::ModifiedTime(status);
    seconds_ = time.tv_sec;
    nanoseconds_ = time.tv_nsec;
}

bool FileStamp::operator!=(const FileStamp& other) const {
    return std::tie(device_, file_, size_, seconds_, nanoseconds_) !=
           std::tie(other.device_, other.file_, other.size_, other.seconds_, other.nanoseconds_);
}

}  // namespace host
