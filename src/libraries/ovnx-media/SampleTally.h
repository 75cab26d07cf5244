// Counts the samples that the tables of an MP4 file declare, while the file's head is being read.
//
// A table may declare one size for all samples, so that a dozen bytes stand for any number of them, and the
// demuxer makes an entry in memory for each. So whatever it reads is first searched for the counts of tables.
// The search does not follow the boxes: the demuxer accepts a table almost anywhere, and none may be missed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ovnxmedia {

class SampleTally {
  public:
    // About 12 hours of video at 60 frames with sound.
    static constexpr uint64_t kLimit = 4u << 20;

    // To be called with what is read from `position` of the file. False once there are too many samples.
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
