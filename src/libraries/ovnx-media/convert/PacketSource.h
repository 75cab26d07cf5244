// A recording as packets in the form and at the times that an MP4 needs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/convert/DecodeTimes.h"
#include "libraries/ovnx-media/convert/PlainPacket.h"

namespace ovnxmedia {

class PacketSource {
  public:
    // The most that any codec's packets wait for others.
    static constexpr int kMostDelay = 16;

    struct Track {
        AVStream* stream;
        Framing framing;
        std::optional<DecodeTimes> times;  // where the container has none
        int64_t last = AV_NOPTS_VALUE;     // when the last packet is decoded
        int64_t duration = 0;              // of the last packet
    };

    // Takes tracks of pictures and sound, the first number 0. A packet may wait for `delay` others, if that
    // is more than the codec says. Throws Failure for codecs that an MP4 does not take.
    PacketSource(int fd, const Budget& budget, int delay);

    AVFormatContext& format() const { return input_.format(); }
    const std::vector<Track>& tracks() const { return tracks_; }
    // By how many microseconds the times of the source are moved, so that it begins at 0.
    int64_t shift() const { return shift_; }

    // The next packet of these tracks, with the track's number instead of the stream's and times that ascend;
    // false at the end. Throws Failure, and TooLittleDelay when a packet would be shown before it is decoded.
    struct TooLittleDelay {};
    bool Read(AVPacket& packet);

  private:
    void TakeTracks(int delay);
    bool ReadAny(AVPacket& packet);
    void SetTimes(Track& track, AVPacket& packet) const;

    MediaInput input_;
    const bool isMatroska_;
    const bool isTransportStream_;
    int64_t shift_ = 0;
    std::vector<Track> tracks_;
    std::vector<int> numbers_;  // of the tracks, by the stream; -1 for those that are left out
};

}  // namespace ovnxmedia
