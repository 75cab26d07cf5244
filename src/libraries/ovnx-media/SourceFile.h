// The bytes of a lent descriptor of a regular file, read at offsets so that its position is left alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ovnxmedia {

class SourceFile {
  public:
    // Throws Failure when `fd` is not a regular file.
    explicit SourceFile(int fd);

    // The size when the file was opened here.
    uint64_t size() const { return size_; }

    // Gives how many bytes were read; fewer than asked for come at the end of the file or where a read fails.
    size_t ReadAt(uint64_t position, void* bytes, size_t size) noexcept;

    // A file that does not decode is damaged, unless a read of it has failed.
    bool HasFailed() const { return hasFailed_; }

  private:
    const int fd_;
    uint64_t size_ = 0;
    bool hasFailed_ = false;
};

// Small reads in order, with a buffer before the file. Never throws, for it is called through C libraries.
class SourceReader {
  public:
    explicit SourceReader(SourceFile& file) : file_(file) {}

    uint64_t position() const { return position_; }
    void Seek(uint64_t position) noexcept { position_ = position; }
    // False when there are fewer bytes; the position is then at the end of what there is.
    bool Read(void* bytes, size_t size) noexcept;

  private:
    size_t TakeHeld(uint8_t* bytes, size_t size) noexcept;

    SourceFile& file_;
    uint64_t position_ = 0;
    uint64_t heldFrom_ = 0;
    size_t held_ = 0;
    std::array<uint8_t, 32768> buffer_;
};

}  // namespace ovnxmedia
