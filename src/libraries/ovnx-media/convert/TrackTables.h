// The tables of a track whose samples are being written, as the file will have them: the packets of a long
// recording would take tens of megabytes otherwise.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "libraries/ovnx-media/cut/TableText.h"

namespace ovnxmedia {

// Times are in units of the track.
class TrackTables {
  public:
    struct Sample {
        uint64_t size;
        int64_t decoded;
        int64_t shown;
        int64_t duration;
        bool isSync;
    };

    // In the order of decoding.
    void Add(const Sample& sample);
    // The last sample has more, which ends then.
    void Extend(uint64_t size, int64_t end);
    // The last samples that were added lie there side by side.
    void AddChunk(uint64_t place, uint32_t samples);

    uint32_t samples() const { return samples_; }
    uint64_t bytes() const { return bytes_; }
    int64_t firstDecoded() const { return firstDecoded_; }
    int64_t lastDecoded() const { return lastDecoded_; }
    // Of the time line of the track, and of what is shown of it: all from the beginning of the movie on.
    int64_t Length() const { return lastDecoded_ + lastDuration_ - firstDecoded_; }
    int64_t ShownLength() const { return shownEnd_ - std::max<int64_t>(firstShown_, 0); }

    // Nothing can be added afterwards.
    void Finish();
    // All tables, in pieces, after Finish. They take so many bytes.
    void Write(const std::function<void(std::string_view)>& write) const;
    uint64_t Size() const;

  private:
    uint32_t samples_ = 0;
    uint64_t bytes_ = 0;
    int64_t firstDecoded_ = 0;
    int64_t firstShown_ = 0;
    int64_t lastDecoded_ = 0;
    int64_t lastDuration_ = 0;
    int64_t shownEnd_ = 0;
    RunRows durations_;
    RunRows shifts_;
    bool isShifted_ = false;
    std::string sync_;
    std::string sizes_;
    std::string chunks_;  // each with the number of its first, of its samples, and of their description
    uint32_t chunkCount_ = 0;
    uint32_t chunkSamples_ = 0;  // of the last
    std::string places_;
};

}  // namespace ovnxmedia
