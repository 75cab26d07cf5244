#include "libraries/ovnx-media/convert/PacketSource.h"

#include <algorithm>
#include <cstring>

#include "libraries/ovnx-media/convert/CodecRules.h"

namespace ovnxmedia {
namespace {

// Enough for a few frames of any recording.
constexpr MediaInput::Probed kProbed{4 << 20, 2000000};
constexpr AVRational kMicroseconds{1, 1000000};
constexpr AVRational kUsualFrame{1, 60};

TrackCodec CodecOf(const AVStream& stream) {
    return {NumberOf(stream.codecpar->codec_type), NumberOf(stream.codecpar->codec_id)};
}

bool IsCover(const AVStream& stream) {
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

int64_t FrameOf(const AVStream& stream) {
    const AVRational rate = stream.avg_frame_rate;
    const AVRational frame = rate.num > 0 && rate.den > 0 ? av_inv_q(rate) : kUsualFrame;
    return std::max<int64_t>(1, av_rescale_q(1, frame, stream.time_base));
}

// A recorder that changes them in the middle needs a second description of its packets.
void CheckSettings(const AVStream& stream, const AVPacket& packet) {
    size_t size = 0;
    const uint8_t* const bytes = av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, &size);
    const AVCodecParameters& codec = *stream.codecpar;
    if (bytes &&
        (static_cast<size_t>(codec.extradata_size) != size || std::memcmp(bytes, codec.extradata, size) != 0))
        throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "its codec is set up anew in the middle");
}

}  // namespace

PacketSource::PacketSource(int fd, const Budget& budget, int delay)
    : input_(fd, budget, {UINT64_MAX, UINT64_MAX}, MediaInput::Trust::Nothing, AnyDemuxerOf),
      isMatroska_(std::strncmp(format().iformat->name, "matroska", 8) == 0),
      isTransportStream_(std::strcmp(format().iformat->name, "mpegts") == 0) {
    input_.Probe(kProbed);
    if (!input_.Video()) throw Failure(OVNX_MEDIA_NO_VIDEO, "there is no video in it");
    if (format().start_time != AV_NOPTS_VALUE) shift_ = -std::max<int64_t>(0, format().start_time);
    TakeTracks(delay);
}

void PacketSource::TakeTracks(int delay) {
    for (unsigned i = 0; i < format().nb_streams; ++i) {
        AVStream& stream = *format().streams[i];
        const TrackCodec codec = CodecOf(stream);
        if (!IsTaken(codec) || IsCover(stream)) {
            stream.discard = AVDISCARD_ALL;
            numbers_.push_back(-1);
            continue;
        }
        CheckCodec(codec);
        numbers_.push_back(static_cast<int>(tracks_.size()));
        tracks_.push_back({&stream, FramingOf(*stream.codecpar, isTransportStream_), {}});
        if (isMatroska_ && codec.kind == AVMEDIA_TYPE_VIDEO)
            tracks_.back().times.emplace(std::clamp(stream.codecpar->video_delay, delay, kMostDelay),
                                         FrameOf(stream));
    }
}

bool PacketSource::ReadAny(AVPacket& packet) {
    try {
        return input_.Read(packet);
    } catch (const Failure& failure) {
        // A recorder that was killed leaves the beginning of a packet at the end.
        if (failure.status() != OVNX_MEDIA_DAMAGED || !avio_feof(format().pb)) throw;
        return false;
    }
}

bool PacketSource::Read(AVPacket& packet) {
    while (ReadAny(packet)) {
        const auto stream = static_cast<size_t>(packet.stream_index);
        if (stream >= numbers_.size()) {
            const TrackCodec codec = CodecOf(*format().streams[stream]);
            if (IsTaken(codec)) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "it has a track that begins late");
            continue;
        }
        const bool isCutOff = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0 && avio_feof(format().pb);
        if (numbers_[stream] < 0 || packet.size == 0 || isCutOff) continue;
        Track& track = tracks_[static_cast<size_t>(numbers_[stream])];
        CheckSettings(*track.stream, packet);
        SetTimes(track, packet);
        packet.stream_index = numbers_[stream];
        return true;
    }
    return false;
}

void PacketSource::SetTimes(Track& track, AVPacket& packet) const {
    const AVRational unit = track.stream->time_base;
    if (packet.pts == AV_NOPTS_VALUE) packet.pts = packet.dts;
    if (packet.pts == AV_NOPTS_VALUE && track.last != AV_NOPTS_VALUE)
        packet.pts = track.last + track.duration;
    if (packet.pts == AV_NOPTS_VALUE) packet.pts = 0;
    if (track.times)
        packet.dts = track.times->Next(packet.pts);
    else if (packet.dts == AV_NOPTS_VALUE)
        packet.dts = packet.pts;
    if (track.last != AV_NOPTS_VALUE && packet.dts <= track.last) {
        const int64_t second = av_rescale_q(1, {1, 1}, unit);
        if (packet.dts < track.last - second) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "its times go back");
        packet.dts = track.last + 1;
    }
    if (packet.pts < packet.dts && track.times) throw TooLittleDelay{};
    packet.pts = std::max(packet.pts, packet.dts);
    if (track.last != AV_NOPTS_VALUE) track.duration = packet.dts - track.last;
    if (packet.duration <= 0) packet.duration = track.duration;
    track.last = packet.dts;
    const int64_t shift = av_rescale_q(shift_, kMicroseconds, unit);
    packet.pts += shift;
    packet.dts += shift;
}

}  // namespace ovnxmedia
