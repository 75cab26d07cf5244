// The bytes of a borrowed descriptor of a regular file. They are read at offsets, so that the descriptor's
// position is neither used nor moved.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "libraries/media-bytes/ByteSource.h"

namespace ovnxmedia {

class SourceFile final : public media::ByteSource {
  public:
    // Throws Failure when `fd` is not a regular file.
    explicit SourceFile(int fd);

    // The size when the file was opened here.
    uint64_t size() const { return size_; }

    // Fewer bytes only at the end of the file, as it was at first, or after a failed read.
    size_t ReadAt(uint64_t position, char* bytes, size_t size) noexcept override;

    // Whether a read has failed: only then is a file that does not decode unreadable instead of damaged.
    bool HasFailed() const { return hasFailed_; }

  private:
    const int fd_;
    uint64_t size_ = 0;
    bool hasFailed_ = false;
};

// Small reads in order, through a buffer. Never throws, for C libraries call it.
class SourceReader {
  public:
    explicit SourceReader(SourceFile& file) : file_(file) {}

    uint64_t position() const { return position_; }
    void Seek(uint64_t position) noexcept { position_ = position; }
    // False when there are fewer bytes; the position is then at the end of those that there are.
    bool Read(void* bytes, size_t size) noexcept;

  private:
    size_t TakeHeld(char* bytes, size_t size) noexcept;

    SourceFile& file_;
    uint64_t position_ = 0;
    uint64_t heldFrom_ = 0;
    size_t held_ = 0;
    std::array<char, 32768> buffer_;
};

}  // namespace ovnxmedia
