// Counts the samples that the tables of an MP4 file promise, while the file's head goes by.
//
// A table may give all samples one size, and then a dozen bytes stand for any number of them; the demuxer
// makes an entry in memory for each. So what it is about to read is looked through for the tables' counts
// first. The boxes around them are not followed: the demuxer takes a table in almost any place, and this must
// miss none.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovnxmedia {

class SampleTally {
  public:
    // About 12 hours of video at 60 frames with sound.
    static constexpr uint64_t kLimit = 4u << 20;

    // Bytes that are about to be read from `position` of the file. False once there are too many samples.
    bool Take(uint64_t position, const uint8_t* bytes, size_t size);

  private:
    // A table's type, version, flags, size and count.
    static constexpr size_t kWindow = 16;

    void Look(const uint8_t* bytes, size_t size);

    uint64_t samples_ = 0;
    uint64_t next_ = 0;
    size_t kept_ = 0;
    uint8_t seam_[2 * kWindow] = {};  // the last bytes of one piece and the first of the next
};

}  // namespace ovnxmedia
