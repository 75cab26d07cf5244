#include "libraries/ovnx-media/convert/Convert.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

#include "libraries/ovnx-media/convert/CodecRules.h"
#include "libraries/ovnx-media/convert/MoviePackets.h"
#include "libraries/ovnx-media/convert/Mp4Output.h"
#include "libraries/ovnx-media/convert/PacketSource.h"
#include "libraries/ovnx-media/convert/ReadCount.h"
#include "libraries/ovnx-media/cut/Remux.h"
#include "libraries/ovnx-media/cut/SampleTable.h"
#include "libraries/ovnx-media/cut/SourceMovie.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace ovnxmedia {
namespace {

// What an MP4 must have of a track.
struct TrackBytes {
    uint64_t size = 0;
    std::string first;  // packet
    std::string last;
};

[[noreturn]] void ThrowUnfaithful() {
    throw Failure(OVNX_MEDIA_UNFAITHFUL, "the MP4 differs from its source");
}

bool IsMovie(int fd) {
    SourceFile file(fd);
    char start[kStartSize];
    const size_t got = file.ReadAt(0, start, sizeof start);
    const char* const demuxer = DemuxerOf({start, got});
    return demuxer && std::strcmp(demuxer, "mov") == 0;
}

// The codec that a sample description of a movie stands for.
int CodecOf(std::string_view type, bool isVideo) {
    unsigned tag = 0;
    type.copy(reinterpret_cast<char*>(&tag), sizeof tag);
    const AVCodecTag* const tags[] = {isVideo ? avformat_get_mov_video_tags() : avformat_get_mov_audio_tags(),
                                      nullptr};
    return av_codec_get_id(tags, tag);
}

bool IsUncompressed(int codec) {
    return codec >= AV_CODEC_ID_PCM_S16LE && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

void CheckCodecs(const SourceMovie& movie) {
    (void)movie.Video();
    for (const SourceTrack& track : movie.tracks()) {
        if (!track.IsVideo() && !track.IsSound()) continue;
        const TrackCodec codec{track.IsVideo() ? AVMEDIA_TYPE_VIDEO : AVMEDIA_TYPE_AUDIO,
                               CodecOf(track.EntryType(1), track.IsVideo())};
        if (!IsUncompressed(codec.codec)) CheckCodec(codec);
    }
}

class Sink {
  public:
    Sink(const PacketSource& source, int output) : output_(output) {
        for (const PacketSource::Track& track : source.tracks())
            tracks_.push_back({&output_.AddTrack(*track.stream), {}, MakePacket()});
        output_.Describe(source.format(), source.shift());
        output_.Start();
    }

    void Write(const PacketSource::Track& from, AVPacket& packet, std::string_view plain) {
        Track& track = tracks_[static_cast<size_t>(packet.stream_index)];
        if (track.bytes.size == 0) track.bytes.first = plain;
        track.bytes.size += plain.size();
        av_packet_unref(track.last.get());
        if (av_packet_ref(track.last.get(), &packet) != 0) throw std::bad_alloc();
        av_packet_rescale_ts(&packet, from.stream->time_base, track.stream->time_base);
        packet.pos = -1;
        output_.Write(packet, plain);
    }

    // Returns what was written of each track.
    std::vector<TrackBytes> Finish(const PacketSource& source, const Budget& budget) {
        std::vector<TrackBytes> written;
        for (Track& track : tracks_) {
            if (track.bytes.size == 0) throw Failure(OVNX_MEDIA_DAMAGED, "it has a track with nothing in it");
            std::string room;
            track.bytes.last = PlainBytes(source.tracks()[written.size()].framing, *track.last, room);
            written.push_back(std::move(track.bytes));
        }
        output_.Finish(budget);
        return written;
    }

  private:
    struct Track {
        AVStream* stream;
        TrackBytes bytes;  // all but the last packet
        PacketOwner last;
    };

    Mp4Output output_;
    std::vector<Track> tracks_;
};

// A copy of fewer bytes takes no longer than the handing over.
constexpr size_t kWorthKeeping = size_t{16} << 10;

void Announce(const PacketListener& listener, const AVPacket& packet, std::string_view plain,
              bool isOfPacket) {
    if (!listener.onPacket) return;
    const bool isWorthKeeping = isOfPacket && packet.buf && plain.size() >= kWorthKeeping;
    BufferOwner owner(isWorthKeeping ? av_buffer_ref(packet.buf) : nullptr);
    if (listener.onPacket(static_cast<uint32_t>(packet.stream_index), plain, owner.get()))
        (void)owner.release();
}

template <typename Take>
void ForEachPacket(PacketSource& source, const PacketListener& listener, const Take& take) {
    ReadCount count(listener);
    const PacketOwner packet = MakePacket();
    std::string room;
    while (source.Read(*packet)) {
        const PacketSource::Track& track = source.tracks()[static_cast<size_t>(packet->stream_index)];
        const std::string_view plain = PlainBytes(track.framing, *packet, room);
        Announce(listener, *packet, plain, plain.data() != room.data());
        const auto size = static_cast<uint64_t>(packet->size);
        take(track, *packet, plain);
        count.Add(size);
    }
    count.Flush();
}

// Opened as any MP4 file.
void Check(int output, const std::vector<TrackBytes>& expected, const Budget& budget) {
    SourceMovie movie(output, budget, SourceMovie::Samples::Leave);
    if (movie.tracks().size() < expected.size()) ThrowUnfaithful();
    for (size_t i = 0; i < expected.size(); ++i) {
        const SourceTrack& track = movie.tracks()[i];
        SampleWalk walk(track.tables(), track.IsSound(), budget);
        uint64_t size = 0;
        uint64_t start = 0;
        Sample last;
        for (Sample sample; walk.Next(sample); last = sample) {
            if (sample.number == 0) start = sample.offset;
            size += sample.size;
        }
        if (size != expected[i].size) ThrowUnfaithful();
        // A sample may consist of several packets.
        const uint64_t end = last.offset + last.size - expected[i].last.size();
        if (last.size < expected[i].last.size() ||
            ReadRange(movie.file(), start, expected[i].first.size()) != expected[i].first ||
            ReadRange(movie.file(), end, expected[i].last.size()) != expected[i].last)
            ThrowUnfaithful();
    }
}

std::vector<TrackBytes> WritePackets(int input, int output, int delay, const PacketListener& listener,
                                     const Budget& budget) {
    PacketSource source(input, budget, delay);
    Sink sink(source, output);
    ForEachPacket(source, listener,
                  [&](const PacketSource::Track& track, AVPacket& packet, std::string_view plain) {
                      sink.Write(track, packet, plain);
                  });
    return sink.Finish(source, budget);
}

// The tables of the recording are gone when it is read again.
void Mux(int input, int output, int delay, const PacketListener& listener, const Budget& budget) {
    const std::vector<TrackBytes> tracks = WritePackets(input, output, delay, listener, budget);
    Check(output, tracks, budget);
}

}  // namespace

void Convert(int input, int output, const PacketListener& listener, const Budget& budget) {
    PrepareFfmpeg();
    if (IsMovie(input)) {
        {
            SourceMovie movie(input, budget, SourceMovie::Samples::Leave);
            CheckCodecs(movie);
            if (output < 0) return;
            ReadMoviePackets(movie, listener, budget);
        }
        Remux(input, output, {0, UINT64_MAX, false, true}, budget);
        return;
    }
    if (output < 0) {
        const PacketSource source(input, budget, 0);
        return;
    }
    try {
        Mux(input, output, 0, listener, budget);
    } catch (const PacketSource::TooLittleDelay&) {
        // The codec's own setup is wrong.
        if (ftruncate(output, 0) != 0) throw Failure(OVNX_MEDIA_UNWRITABLE, std::strerror(errno));
        if (listener.onRestart) listener.onRestart();
        try {
            Mux(input, output, PacketSource::kMostDelay, listener, budget);
        } catch (const PacketSource::TooLittleDelay&) {
            throw Failure(OVNX_MEDIA_DAMAGED, "its pictures are in no order that can be shown");
        }
    }
}

void ReadPackets(int input, const PacketListener& listener, const Budget& budget) {
    PrepareFfmpeg();
    if (IsMovie(input)) {
        SourceMovie movie(input, budget, SourceMovie::Samples::Leave);
        ReadMoviePackets(movie, listener, budget);
        return;
    }
    PacketSource source(input, budget, PacketSource::kMostDelay);
    ForEachPacket(source, listener, [](const PacketSource::Track&, AVPacket&, std::string_view) {});
}

void ReleasePacket(void* owner) {
    auto* buffer = static_cast<AVBufferRef*>(owner);
    av_buffer_unref(&buffer);
}

}  // namespace ovnxmedia
