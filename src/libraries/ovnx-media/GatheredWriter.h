// Collects small pieces and writes them in few large steps: a megabyte at once takes less time than parts
// that end within the file's pages. Pieces of packets are referred to until then, not copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <sys/uio.h>

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

class GatheredWriter {
  public:
    explicit GatheredWriter(int fd) : fd_(fd) {}

    // Writes bytes at a position of the file, in any order. `buffer` keeps them in memory; without one they
    // are written at once. False with errno set when anything cannot be written.
    bool Write(int64_t position, const uint8_t* bytes, size_t size, const AVBufferRef* buffer);

    // Writes what has been collected.
    bool Flush();

  private:
    using Reference = std::unique_ptr<AVBufferRef, FreedBy<av_buffer_unref>>;

    const int fd_;
    int64_t start_ = 0;  // of what has been collected
    size_t size_ = 0;
    std::vector<iovec> pieces_;
    std::vector<Reference> references_;
};

}  // namespace ovnxmedia
