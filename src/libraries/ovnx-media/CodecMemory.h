// What the codecs have used for one picture and the next can use again. Fresh memory costs the system's time
// for each page, which is half of a large video's keyframe.
#pragma once

#include <cstddef>

namespace ovnxmedia {

// While there is one, some of the memory that codecs free is kept for those that run; with the last of them
// all of it is returned to the system. Any thread. Does nothing where codecs use the process's own heap.
class CodecMemoryUse {
  public:
    // Keeps so many bytes at most, or as many as another of them lets it.
    static constexpr size_t kForPictures = size_t{64} << 20;
    static constexpr size_t kForPackets = size_t{8} << 20;
    explicit CodecMemoryUse(size_t most) noexcept;
    ~CodecMemoryUse();
    CodecMemoryUse(const CodecMemoryUse&) = delete;
    CodecMemoryUse& operator=(const CodecMemoryUse&) = delete;
};

}  // namespace ovnxmedia
