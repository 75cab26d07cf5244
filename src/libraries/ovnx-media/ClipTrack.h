// Which packets of one track a clip takes.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

// Times are in units of the track.
class ClipTrack {
  public:
    using Sink = std::function<void(AVPacket&)>;

    // The clip shows what lies from `start` to before `end`. With `hides` it may contain packets that are not
    // shown but are needed to decode those that are.
    ClipTrack(AVStream& stream, int64_t start, int64_t end, bool hides);

    AVStream& stream() const { return *stream_; }

    // To be called with the packets of the track in the order of the file, starting at the last keyframe at
    // or before `start`. Passes those that belong in the clip to `sink`, which may move their content away.
    // Throws Failure for packets that no track can have.
    void Take(AVPacket& packet, const Sink& sink);

    // Whether all packets that follow lie after the clip.
    bool IsDone() const { return isDone_; }

    int64_t start() const { return start_; }
    int64_t end() const { return end_; }
    // Where what the clip shows of the track ends; the start when there is nothing.
    int64_t ShownEnd() const;

  private:
    bool IsVideo() const { return stream_->codecpar->codec_type == AVMEDIA_TYPE_VIDEO; }
    bool IsBefore(const AVPacket& packet) const;
    void TakeVideo(AVPacket& packet, const Sink& sink);
    void Give(AVPacket& packet, const Sink& sink);

    AVStream* stream_;
    int64_t start_;
    int64_t end_;
    bool hides_;
    bool isDone_ = false;
    bool goesOn_ = false;                // something is shown after the end
    int64_t keyTime_ = AV_NOPTS_VALUE;   // when the first keyframe is shown
    int64_t lastTime_ = AV_NOPTS_VALUE;  // when the last packet is decoded
    int64_t shownEnd_;
    std::vector<PacketOwner> held_;  // shown after the end; needed only to decode what is shown before it
};

}  // namespace ovnxmedia
