// Writes what comes piece by piece in few large steps: a file takes a megabyte at once in less time than in
// parts that end within its pages. Pieces of packets are referred to until then, not copied.
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

    // Bytes for a position of the file, in any order. `buffer` is what keeps them, or null when they are to
    // be written at once. False with errno set when anything cannot be written.
    bool Write(int64_t position, const uint8_t* bytes, size_t size, const AVBufferRef* buffer);

    // Writes what waits.
    bool Flush();

  private:
    using Reference = std::unique_ptr<AVBufferRef, FreedBy<av_buffer_unref>>;

    const int fd_;
    int64_t start_ = 0;  // of what waits
    size_t size_ = 0;
    std::vector<iovec> pieces_;
    std::vector<Reference> references_;
};

}  // namespace ovnxmedia
