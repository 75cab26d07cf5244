#include "libraries/ovnx-media/Remux.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "libraries/ovnx-media/ClipTrack.h"
#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/MovieBoxes.h"
#include "libraries/ovnx-media/RemuxOutput.h"

namespace ovnxmedia {
namespace {

constexpr AVRational kTick{1, 10000000};
constexpr AVRational kMovieUnit{1, RemuxOutput::kMovieTimescale};
// Nothing lasts this long, and it can be scaled.
constexpr uint64_t kLastTick = uint64_t{1} << 52;
constexpr MediaInput::Limits kLimits{UINT64_MAX, 2 * SampleTally::kLimit};
// The most that a "moov" takes: for the movie and for each track, not counting samples; and for each sample
// in the tables of sizes, times, time offsets, keyframes and chunks.
constexpr uint64_t kRoomForMovie = 4096;
constexpr uint64_t kRoomForSample = 4 + 8 + 8 + 4 + 12 + 8 + 4;

bool IsKept(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO) &&
           !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
}

int64_t ToUnits(uint64_t ticks, const AVStream& stream) {
    return av_rescale_q(static_cast<int64_t>(std::min(ticks, kLastTick)), kTick, stream.time_base);
}

// The range is to have something in it, and the file to be one that can be cut.
AVStream& CheckedVideo(MediaInput& input, const ClipRange& range) {
    if (input.format().iformat != av_find_input_format("mov"))
        throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no MP4 file");
    AVStream* video = input.Video();
    if (!video) throw Failure(OVNX_MEDIA_NO_VIDEO, "there is no video in it");
    if (range.start >= range.end) throw Failure(OVNX_MEDIA_EMPTY_RANGE, "the range is empty");
    return *video;
}

// The number of samples that the clip may take from a track, rounded up. Throws Failure when any of them lies
// beyond the end of the file, so that a file that has lost its end fails before anything is copied.
uint64_t SamplesOf(const ClipTrack& track, uint64_t fileSize) {
    AVStream* stream = &track.stream();
    // The table has the times at which frames are decoded. The last keyframe shown by then may be the one
    // before.
    int first = av_index_search_timestamp(stream, track.start(), AVSEEK_FLAG_BACKWARD);
    if (first > 0)
        first = av_index_search_timestamp(stream, avformat_index_get_entry(stream, first)->timestamp - 1,
                                          AVSEEK_FLAG_BACKWARD);
    first = std::max(first, 0);
    int at = first;
    for (; at < avformat_index_get_entries_count(stream); ++at) {
        const AVIndexEntry& entry = *avformat_index_get_entry(stream, at);
        if (entry.timestamp >= track.end()) break;
        const auto position = static_cast<uint64_t>(entry.pos);  // enormous, if it was below zero
        if (position > fileSize || static_cast<uint64_t>(entry.size) > fileSize - position)
            throw Failure(OVNX_MEDIA_DAMAGED, "a part of it is missing");
    }
    return static_cast<uint64_t>(at - first);
}

class Remuxer {
  public:
    Remuxer(int input, int output, const ClipRange& range, const Budget& budget)
        : range_(range),
          input_(input, budget, kLimits),
          userData_(ReadUserData(input_.file(), budget)),
          video_(CheckedVideo(input_, range)),
          output_(output),
          packet_(MakePacket()) {}

    void Run() {
        ChooseTracks();
        output_.Begin(input_.format(), RoomForMovie());
        Copy();
        Finish();
    }

  private:
    struct Written {
        ClipTrack source;
        AVStream* stream;
        int64_t nextTime;  // when the next packet is decoded at the earliest
    };

    // A video that begins later has no keyframe there; then the beginning will do.
    void GoToStart() { input_.SeekBack(video_, ToUnits(range_.start, video_)); }

    // When the keyframe that the clip starts at is shown.
    int64_t KeyTime() {
        while (input_.Read(*packet_))
            if (packet_->stream_index == video_.index && packet_->flags & AV_PKT_FLAG_KEY)
                return packet_->pts;
        throw Failure(OVNX_MEDIA_EMPTY_RANGE, "the range is after the end");
    }

    void ChooseTracks() {
        GoToStart();
        const int64_t keyTime = range_.atKeyframe ? KeyTime() : 0;
        if (range_.atKeyframe) GoToStart();
        const AVFormatContext& format = input_.format();
        trackOf_.assign(format.nb_streams, -1);
        for (unsigned i = 0; i < format.nb_streams; ++i) {
            AVStream& stream = *format.streams[i];
            stream.discard = IsKept(stream) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
            if (!IsKept(stream)) continue;
            const int64_t start = range_.atKeyframe
                                      ? av_rescale_q(keyTime, video_.time_base, stream.time_base)
                                      : ToUnits(range_.start, stream);
            trackOf_[i] = static_cast<int>(tracks_.size());
            tracks_.push_back({ClipTrack(stream, start, ToUnits(range_.end, stream), !range_.atKeyframe),
                               &output_.AddTrack(stream), std::numeric_limits<int64_t>::min()});
        }
    }

    uint64_t RoomForMovie() const {
        uint64_t room = kRoomForMovie + userData_.size();
        for (const Written& track : tracks_)
            room += kRoomForMovie + static_cast<uint64_t>(track.stream->codecpar->extradata_size) +
                    SamplesOf(track.source, input_.file().size()) * kRoomForSample;
        return room;
    }

    void Copy() {
        size_t open = tracks_.size();
        while (open > 0 && input_.Read(*packet_)) {
            const int index = trackOf_[static_cast<size_t>(packet_->stream_index)];
            if (index < 0) continue;
            Written& track = tracks_[static_cast<size_t>(index)];
            if (track.source.IsDone()) continue;
            Check(*packet_);
            track.source.Take(*packet_, [&](AVPacket& packet) { Write(track, packet); });
            if (!track.source.IsDone()) continue;
            --open;
            track.source.stream().discard = AVDISCARD_ALL;
        }
    }

    static void Check(const AVPacket& packet) {
        if (packet.flags & AV_PKT_FLAG_CORRUPT) throw Failure(OVNX_MEDIA_DAMAGED, "a part of it is missing");
        if (av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr))
            throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "it changes its coding within");
    }

    void Write(Written& track, AVPacket& packet) {
        packet.pts -= track.source.start();
        packet.dts -= track.source.start();
        av_packet_rescale_ts(&packet, track.source.stream().time_base, track.stream->time_base);
        // Equal times do occur, and the muxer takes none.
        packet.dts = std::max(packet.dts, track.nextTime);
        packet.pts = std::max(packet.pts, packet.dts);
        track.nextTime = packet.dts + 1;
        packet.stream_index = track.stream->index;
        packet.flags &= AV_PKT_FLAG_KEY;
        output_.Write(packet);
    }

    // How long the clip shows the track, in units of the movie.
    static int64_t DurationOf(const ClipTrack& track) {
        return av_rescale_q(track.ShownEnd() - track.start(), track.stream().time_base, kMovieUnit);
    }

    // The most that the clip shows: the last packet of a sound track is padded and extends beyond the end.
    int64_t Longest() const {
        const ClipTrack& video =
            tracks_[static_cast<size_t>(trackOf_[static_cast<size_t>(video_.index)])].source;
        const int64_t shown = DurationOf(video);
        if (shown == 0) throw Failure(OVNX_MEDIA_EMPTY_RANGE, "the range is after the end");
        const int64_t told = input_.format().duration;
        // A file in fragments has no duration.
        if (told <= 0) return std::numeric_limits<int64_t>::max();
        return std::max(shown, av_rescale_q(told, AV_TIME_BASE_Q, kMovieUnit) -
                                   av_rescale_q(video.start(), video_.time_base, kMovieUnit));
    }

    void Finish() {
        const int64_t longest = Longest();
        std::vector<uint64_t> durations;
        for (const Written& track : tracks_)
            durations.push_back(static_cast<uint64_t>(std::min(DurationOf(track.source), longest)));
        output_.Finish(durations, userData_);
    }

    const ClipRange range_;
    MediaInput input_;
    const std::string userData_;
    AVStream& video_;
    RemuxOutput output_;
    const PacketOwner packet_;
    std::vector<Written> tracks_;
    std::vector<int> trackOf_;  // by the input's streams, -1 for those left out
};

}  // namespace

void Remux(int input, int output, const ClipRange& range, const Budget& budget) {
    Remuxer(input, output, range, budget).Run();
}

}  // namespace ovnxmedia
