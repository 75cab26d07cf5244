// Whole reads and writes through an open descriptor: interrupted calls are repeated and partial ones
// continued.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "base/FileDescriptor.h"
#include "base/SlabMemory.h"

namespace KXP {

// A descriptor that somebody else owns, for the length of a call.
class DescriptorRef {
  public:
    DescriptorRef(int fd) : fd_(fd) {}                              // NOLINT(google-explicit-constructor)
    DescriptorRef(const FileDescriptor& file) : fd_(file.get()) {}  // NOLINT(google-explicit-constructor)

    int get() const { return fd_; }

  private:
    int fd_;
};

// Reads the next bytes at the descriptor's position: returns their number, 0 at the end, -1 with errno set.
long ReadSome(DescriptorRef file, char* buffer, size_t size);

// Fills `buffer` with bytes from `position` on and returns their number. There are fewer only at the end of
// the file, with errno 0, or where a read fails, with errno set. The descriptor's position stays.
size_t ReadAt(DescriptorRef file, uint64_t position, void* buffer, size_t size);

// Writes all bytes at the descriptor's position. False with errno set; an unknown part is then written.
bool WriteFully(DescriptorRef file, std::string_view bytes);

// The same from `offset` on; the descriptor's position stays.
bool WriteFullyAt(DescriptorRef file, const char* bytes, size_t size, uint64_t offset);
// The same with parts, one after the other.
bool WriteFullyAt(DescriptorRef file, const std::vector<std::string_view>& parts, uint64_t offset);

// Cuts a file back to `size` after a write that failed, as well as can be; errno stays.
void TakeBack(DescriptorRef file, uint64_t size);

// The bytes of a file in memory, followed by kSlack zero bytes.
struct FileBytes {
    static constexpr size_t kSlack = 16;

    std::unique_ptr<char[], SlabDeleter> bytes;
    size_t size = 0;

    std::string_view view() const { return {bytes.get(), size}; }
};

// Reads from the start, as many bytes as the file holds when it is asked for its size. False with errno set
// when a read fails or the file is larger than `limit` (EFBIG).
bool ReadWhole(DescriptorRef file, size_t limit, FileBytes& content);

}  // namespace KXP
