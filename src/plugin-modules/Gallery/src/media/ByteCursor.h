// A position in a byte source, with a window of bytes around it so that walking costs few reads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "libraries/media-bytes/ByteSource.h"
#include "libraries/media-bytes/ByteView.h"

namespace media {

// Starts at position 0. The source must outlive it. About 16 KiB, meant to be a local variable.
class ByteCursor {
  public:
    // The most that one Take returns.
    static constexpr size_t kMaxTake = 4096;

    explicit ByteCursor(ByteSource& source) : source_(source) {}
    ByteCursor(const ByteCursor&) = delete;
    ByteCursor& operator=(const ByteCursor&) = delete;

    // Returns the next `count` bytes, at most kMaxTake, and moves past them; fewer only at the end of the
    // source. The view is valid until the next Take.
    ByteView Take(size_t count) {
        const uint64_t offset = position_ - windowStart_;
        if (position_ < windowStart_ || offset >= windowSize_ || count > windowSize_ - offset)
            return TakeBehindWindow(count);
        position_ += count;
        return ByteView({window_ + offset, count});
    }

    // Moves forward. A position after the end is no error; there are just no bytes.
    void Skip(uint64_t count) { position_ += std::min(count, UINT64_MAX - position_); }

    void Rewind() { position_ = 0; }

    // Moves to any position. Within the window this costs no read.
    void MoveTo(uint64_t position) { position_ = position; }

    // Whether any Take so far has returned too few bytes.
    bool CameShort() const { return cameShort_; }

  private:
    // For most captures the first window is enough, and in a scan of thousands of files every copied byte
    // counts; for what lies elsewhere a larger read pays off.
    static constexpr size_t kFirstWindow = 2048;
    static constexpr size_t kNextWindow = 16384;

    ByteView TakeBehindWindow(size_t count);

    ByteSource& source_;
    uint64_t position_ = 0;
    uint64_t windowStart_ = 0;
    size_t windowSize_ = 0;
    size_t nextWindow_ = kFirstWindow;
    bool cameShort_ = false;
    char window_[kNextWindow];
};

}  // namespace media
