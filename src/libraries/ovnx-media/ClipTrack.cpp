#include "libraries/ovnx-media/ClipTrack.h"

#include <algorithm>
#include <utility>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

// Frames wait for others in the decoder, but never for many. Beyond that number packets go into the clip,
// where they do no harm.
constexpr size_t kMostHeld = 64;
// Times up to here can be added and scaled without overflow.
constexpr int64_t kFurthest = int64_t{1} << 56;

}  // namespace

ClipTrack::ClipTrack(AVStream& stream, int64_t start, int64_t end, bool hides)
    : stream_(&stream), start_(start), end_(end), hides_(hides), shownEnd_(start) {}

// A sound is decoded with the help of the packet before it.
bool ClipTrack::IsBefore(const AVPacket& packet) const {
    return hides_ ? packet.pts + 2 * packet.duration <= start_ : packet.pts < start_;
}

void ClipTrack::Take(AVPacket& packet, const Sink& sink) {
    for (const int64_t time : {packet.dts, packet.pts, packet.duration})
        if (time < -kFurthest || time > kFurthest)
            throw Failure(OVNX_MEDIA_DAMAGED, "a packet without a time");
    // Not every table has durations. That of the packet before will do: only the last one matters.
    if (packet.duration <= 0 && lastTime_ != AV_NOPTS_VALUE)
        packet.duration = std::max<int64_t>(0, packet.dts - lastTime_);
    lastTime_ = packet.dts;
    // What the source itself hides does not become visible by being cut.
    if (packet.pts >= end_ && !(packet.flags & AV_PKT_FLAG_DISCARD)) goesOn_ = true;
    if (packet.dts >= end_) {
        isDone_ = true;
        held_.clear();
    } else if (IsVideo()) {
        TakeVideo(packet, sink);
    } else if (packet.pts < end_ && !IsBefore(packet)) {
        Give(packet, sink);
    }
}

int64_t ClipTrack::ShownEnd() const {
    return shownEnd_ > start_ && goesOn_ ? end_ : std::clamp(shownEnd_, start_, std::max(start_, end_));
}

void ClipTrack::TakeVideo(AVPacket& packet, const Sink& sink) {
    if (keyTime_ == AV_NOPTS_VALUE) {
        if (!(packet.flags & AV_PKT_FLAG_KEY)) return;
        keyTime_ = packet.pts;
    }
    // Packets shown before the keyframe but stored after it cannot be decoded without earlier ones.
    if (packet.pts < keyTime_) return;
    if (packet.pts >= end_) {
        PacketOwner held = MakePacket();
        av_packet_move_ref(held.get(), &packet);
        held_.push_back(std::move(held));
        if (held_.size() <= kMostHeld) return;
    }
    for (const PacketOwner& held : held_)
        Give(*held, sink);
    held_.clear();
    if (packet.data) Give(packet, sink);
}

void ClipTrack::Give(AVPacket& packet, const Sink& sink) {
    if (!(packet.flags & AV_PKT_FLAG_DISCARD) && packet.pts < end_)
        shownEnd_ = std::max(shownEnd_, packet.pts + packet.duration);
    sink(packet);
}

}  // namespace ovnxmedia
