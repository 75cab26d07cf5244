// Whether a file was changed between two looks at it.
#pragma once

#include <cstdint>
#include <string>

namespace host {

class FileStamp {
  public:
    // Follows links; all zero if there is no such file.
    explicit FileStamp(const std::string& path);

    bool operator!=(const FileStamp& other) const;

  private:
    uint64_t device_ = 0;
    uint64_t file_ = 0;
    int64_t size_ = 0;
    int64_t seconds_ = 0;  // of the last change
    int64_t nanoseconds_ = 0;
};

}  // namespace host
