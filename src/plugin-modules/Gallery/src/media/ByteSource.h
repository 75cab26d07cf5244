// Where the walks get their bytes from: a file, or memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/InputFileStream.h"

namespace media {

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Fills `out` with up to `count` bytes from `position` on, which may lie anywhere; fewer come only at the
    // end of the source.
    virtual size_t ReadAt(uint64_t position, char* out, size_t count) = 0;
};

// Over an open file, which must outlive it.
class FileSource final : public ByteSource {
  public:
    explicit FileSource(KXP::ifstream& file) : file_(file) {}

    size_t ReadAt(uint64_t position, char* out, size_t count) override {
        return file_.read_at(position, out, count);
    }

  private:
    KXP::ifstream& file_;
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
