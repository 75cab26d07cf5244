// Where the readers of media files get their bytes from: a file, or memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace media {

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Fills `out` with up to `count` bytes from `position` on, which may lie anywhere, and returns their
    // number. It is smaller than `count` only at the end of the source or after a failed read.
    virtual size_t ReadAt(uint64_t position, char* out, size_t count) = 0;
};

// Over bytes that must outlive it.
class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        if (position >= bytes_.size()) return 0;
        return bytes_.copy(out, count, static_cast<size_t>(position));
    }

  private:
    std::string_view bytes_;
};

}  // namespace media
