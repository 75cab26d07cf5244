#include "sample-media/VariedMedia.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>

#include "libraries/ovnx-media/Ffmpeg.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace made {
namespace {

constexpr AVRational kUnit{1, 30000};
constexpr int kFrame = 1001;
constexpr int kBlock = 8;

int Check(int result, const std::string& what) {
    if (result < 0) throw std::runtime_error("cannot make a video: " + what);
    return result;
}

template <typename T>
T* Check(T* object, const std::string& what) {
    if (!object) throw std::runtime_error("cannot make a video: " + what);
    return object;
}

uint32_t Mixed(uint32_t a, uint32_t b = 0, uint32_t c = 0) {
    uint32_t value = a * 2654435761u ^ b * 2246822519u ^ c * 3266489917u;
    value = (value ^ value >> 15) * 2246822519u;
    return value ^ value >> 13;
}

class Options {
  public:
    explicit Options(const std::string& text) {
        Check(av_dict_parse_string(&options_, text.c_str(), "=", ":", 0), text);
    }
    ~Options() { av_dict_free(&options_); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    AVDictionary** get() { return &options_; }

  private:
    AVDictionary* options_ = nullptr;
};

// Blocks that wander, and one that changes all the time.
void Paint(AVFrame& frame, int number, uint32_t seed) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor& description = *av_pix_fmt_desc_get(format);
    const int depth = description.comp[0].depth;
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const bool isChroma = plane > 0;
        const int width = -(-frame.width >> (isChroma ? description.log2_chroma_w : 0));
        const int height = -(-frame.height >> (isChroma ? description.log2_chroma_h : 0));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const bool isCorner = x < kBlock && y < kBlock;
                const uint32_t block = static_cast<uint32_t>((isCorner ? 0 : x + number * 2) / kBlock);
                const uint32_t value = Mixed(seed + static_cast<uint32_t>(plane), block,
                                             static_cast<uint32_t>(isCorner ? 1000 + number : y / kBlock));
                const uint32_t level = 16 + value % 200;
                uint8_t* const row = frame.data[plane] + y * static_cast<ptrdiff_t>(frame.linesize[plane]);
                if (depth > 8)
                    reinterpret_cast<uint16_t*>(row)[x] = static_cast<uint16_t>(level << (depth - 8));
                else
                    row[x] = static_cast<uint8_t>(level);
            }
    }
}

void Sound(AVFrame& frame, uint32_t seed) {
    const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
    for (int i = 0; i < frame.nb_samples; ++i)
        for (int channel = 0; channel < 2; ++channel) {
            const auto at = static_cast<uint32_t>(frame.pts + i);
            const double noise = static_cast<double>(Mixed(seed, at / 64) % 1000) / 1000 - 0.5;
            const double level = 0.3 * std::sin(at * 0.001 * (20 + at / 9000 % 40)) + 0.2 * noise;
            uint8_t* const plane = frame.data[isPlanar ? channel : 0];
            const int place = isPlanar ? i : 2 * i + channel;
            switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
                case AV_SAMPLE_FMT_S16:
                    reinterpret_cast<int16_t*>(plane)[place] = static_cast<int16_t>(level * 32767);
                    break;
                case AV_SAMPLE_FMT_S32:
                    reinterpret_cast<int32_t*>(plane)[place] = static_cast<int32_t>(level * 8388607) * 256;
                    break;
                default:
                    reinterpret_cast<float*>(plane)[place] = static_cast<float>(level);
            }
        }
}

struct Track {
    ovnxmedia::CodecOwner codec;
    AVStream* stream = nullptr;
    std::vector<ovnxmedia::PacketOwner> packets;
};

class Maker {
  public:
    Maker(const VariedVideo& video, const std::string& path) : video_(video), path_(path) {
        AVFormatContext* format = nullptr;
        Check(avformat_alloc_output_context2(&format, nullptr, video.format.c_str(), path.c_str()), path);
        format_.reset(format);
    }

    void Make() {
        std::vector<Track> tracks;
        if (!video_.encoder.empty()) tracks.push_back(VideoTrack());
        for (const VariedSound& sound : video_.sounds)
            tracks.push_back(SoundTrack(sound, static_cast<uint32_t>(tracks.size())));
        AddChapters();
        Mux(tracks);
    }

  private:
    Track Open(const std::string& encoder, const std::string& options,
               const std::function<void(AVCodecContext&, const AVCodec&)>& set) {
        Track track;
        const AVCodec* const codec = Check(avcodec_find_encoder_by_name(encoder.c_str()), encoder);
        track.codec.reset(Check(avcodec_alloc_context3(codec), encoder));
        track.codec->thread_count = 1;
        track.codec->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        if (format_->oformat->flags & AVFMT_GLOBALHEADER) track.codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        set(*track.codec, *codec);
        Options parsed(options);
        Check(avcodec_open2(track.codec.get(), codec, parsed.get()), encoder);
        track.stream = Check(avformat_new_stream(format_.get(), nullptr), "stream");
        Check(avcodec_parameters_from_context(track.stream->codecpar, track.codec.get()), "parameters");
        track.stream->time_base = track.codec->time_base;
        return track;
    }

    Track VideoTrack() {
        Track track = Open(video_.encoder, video_.options, [this](AVCodecContext& codec, const AVCodec&) {
            codec.width = video_.width;
            codec.height = video_.height;
            codec.pix_fmt = av_get_pix_fmt(video_.pixels.c_str());
            codec.time_base = kUnit;
            codec.framerate = {kUnit.den, kFrame};
            codec.gop_size = video_.keyInterval;
            codec.max_b_frames = video_.bFrames;
            if (!video_.isHdr) return;
            codec.color_primaries = AVCOL_PRI_BT2020;
            codec.color_trc = AVCOL_TRC_SMPTE2084;
            codec.colorspace = AVCOL_SPC_BT2020_NCL;
        });
        if (video_.rotation != 0)
            av_display_rotation_set(
                reinterpret_cast<int32_t*>(
                    Check(av_stream_new_side_data(track.stream, AV_PKT_DATA_DISPLAYMATRIX, 36), "rotation")),
                video_.rotation);
        const ovnxmedia::FrameOwner frame(Check(av_frame_alloc(), "frame"));
        frame->format = track.codec->pix_fmt;
        frame->width = video_.width;
        frame->height = video_.height;
        Check(av_frame_get_buffer(frame.get(), 0), "frame");
        int64_t time = std::lround(video_.start * kUnit.den);
        for (int number = 0; number < video_.frames; ++number) {
            Check(av_frame_make_writable(frame.get()), "frame");
            Paint(*frame, number, video_.seed);
            frame->pts = time;
            time +=
                video_.variableRate ? 500 + Mixed(video_.seed, static_cast<uint32_t>(number)) % 2500 : kFrame;
            Encode(track, frame.get());
        }
        Encode(track, nullptr);
        SetDurations(track);
        return track;
    }

    // As long as it is until the next frame.
    static void SetDurations(const Track& track) {
        std::vector<AVPacket*> packets;
        for (const ovnxmedia::PacketOwner& packet : track.packets)
            packets.push_back(packet.get());
        std::sort(packets.begin(), packets.end(),
                  [](const AVPacket* a, const AVPacket* b) { return a->pts < b->pts; });
        for (size_t i = 0; i < packets.size(); ++i)
            packets[i]->duration = i + 1 < packets.size() ? packets[i + 1]->pts - packets[i]->pts : kFrame;
    }

    Track SoundTrack(const VariedSound& sound, uint32_t number) {
        Track track = Open(sound.encoder, sound.options, [&](AVCodecContext& codec, const AVCodec& encoder) {
            codec.sample_rate = sound.rate;
            codec.sample_fmt = encoder.sample_fmts[0];
            codec.bit_rate = 96000;
            codec.time_base = {1, sound.rate};
            codec.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        });
        const ovnxmedia::FrameOwner frame(Check(av_frame_alloc(), "frame"));
        frame->format = track.codec->sample_fmt;
        frame->ch_layout = track.codec->ch_layout;
        frame->sample_rate = sound.rate;
        frame->nb_samples = track.codec->frame_size > 0 ? track.codec->frame_size : 1000;
        Check(av_frame_get_buffer(frame.get(), 0), "frame");
        const int64_t end = std::lround(sound.end * sound.rate);
        for (frame->pts = std::lround(sound.start * sound.rate); frame->pts < end;
             frame->pts += frame->nb_samples) {
            Check(av_frame_make_writable(frame.get()), "frame");
            Sound(*frame, video_.seed + number);
            Encode(track, frame.get());
        }
        Encode(track, nullptr);
        return track;
    }

    static void Encode(Track& track, const AVFrame* frame) {
        Check(avcodec_send_frame(track.codec.get(), frame), "encoding");
        for (;;) {
            ovnxmedia::PacketOwner packet(Check(av_packet_alloc(), "packet"));
            if (avcodec_receive_packet(track.codec.get(), packet.get()) < 0) return;
            track.packets.push_back(std::move(packet));
        }
    }

    void AddChapters() {
        const size_t count = video_.chapters.size();
        format_->chapters = static_cast<AVChapter**>(av_calloc(count + 1, sizeof(AVChapter*)));
        for (const double start : video_.chapters) {
            auto* const chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
            chapter->id = format_->nb_chapters;
            chapter->time_base = {1, 1000};
            chapter->start = std::lround(start * 1000);
            chapter->end = chapter->start + 1000;
            av_dict_set(&chapter->metadata, "title", std::to_string(chapter->id).c_str(), 0);
            format_->chapters[format_->nb_chapters++] = chapter;
        }
        for (unsigned i = 0; i + 1 < format_->nb_chapters; ++i)
            format_->chapters[i]->end = format_->chapters[i + 1]->start;
    }

    void Mux(const std::vector<Track>& tracks) {
        Check(avio_open(&format_->pb, path_.c_str(), AVIO_FLAG_READ_WRITE), path_);
        format_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        Options options(video_.muxing);
        Check(avformat_write_header(format_.get(), options.get()), "header");
        std::vector<size_t> next(tracks.size(), 0);
        for (;;) {
            const Track* chosen = nullptr;
            for (const Track& track : tracks) {
                const size_t at = next[static_cast<size_t>(&track - tracks.data())];
                if (at == track.packets.size()) continue;
                if (!chosen || av_compare_ts(track.packets[at]->dts, track.codec->time_base, chosenTime_,
                                             chosen->codec->time_base) < 0) {
                    chosen = &track;
                    chosenTime_ = track.packets[at]->dts;
                }
            }
            if (!chosen) break;
            AVPacket& packet = *chosen->packets[next[static_cast<size_t>(chosen - tracks.data())]++];
            packet.stream_index = chosen->stream->index;
            av_packet_rescale_ts(&packet, chosen->codec->time_base, chosen->stream->time_base);
            Check(av_write_frame(format_.get(), &packet), "packet");
        }
        Check(av_write_trailer(format_.get()), "trailer");
        Check(avio_closep(&format_->pb), path_);
    }

    struct Closed {
        void operator()(AVFormatContext* format) const {
            avio_closep(&format->pb);
            avformat_free_context(format);
        }
    };

    const VariedVideo& video_;
    const std::string path_;
    std::unique_ptr<AVFormatContext, Closed> format_;
    int64_t chosenTime_ = 0;
};

}  // namespace

void Write(const VariedVideo& video, const std::string& path) {
    av_log_set_level(AV_LOG_ERROR);
    Maker(video, path).Make();
}

}  // namespace made
