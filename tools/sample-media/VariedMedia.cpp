#include "sample-media/VariedMedia.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "sample-media/Muxing.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/pixdesc.h>
}

namespace made {
namespace {

constexpr AVRational kUnit{1, 30000};
constexpr int kFrame = 1001;
constexpr int kBlock = 8;

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

class Maker {
  public:
    Maker(const VariedVideo& video, const std::string& path)
        : video_(video), format_(OutputOf(video.format, path)) {}

    void Make() {
        std::vector<Track> tracks;
        if (!video_.encoder.empty()) tracks.push_back(VideoTrack());
        for (const VariedSound& sound : video_.sounds)
            tracks.push_back(SoundTrack(sound, static_cast<uint32_t>(tracks.size())));
        AddChapters();
        format_->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        Options options(video_.muxing);
        Mux(*format_, tracks, options.get());
    }

  private:
    Track Open(const std::string& encoder, const std::string& options, int rotation,
               const std::function<void(AVCodecContext&)>& set) {
        ovnxmedia::CodecOwner codec = EncoderOf(encoder);
        codec->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        if (format_->oformat->flags & AVFMT_GLOBALHEADER) codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        set(*codec);
        Options parsed(options);
        Check(avcodec_open2(codec.get(), nullptr, parsed.get()), encoder);
        return AddTrack(*format_, std::move(codec), rotation);
    }

    Track VideoTrack() {
        Track track = Open(video_.encoder, video_.options, video_.rotation, [this](AVCodecContext& codec) {
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
        const ovnxmedia::FrameOwner frame = FrameFor(*track.codec);
        int64_t time = std::lround(video_.start * kUnit.den);
        for (int number = 0; number < video_.frames; ++number) {
            Check(av_frame_make_writable(frame.get()), "frame");
            Paint(*frame, number, video_.seed);
            frame->pts = time;
            time +=
                video_.variableRate ? 500 + Mixed(video_.seed, static_cast<uint32_t>(number)) % 2500 : kFrame;
            track.Encode(frame.get());
        }
        track.Encode(nullptr);
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
        Track track = Open(sound.encoder, sound.options, 0, [&](AVCodecContext& codec) {
            codec.sample_rate = sound.rate;
            codec.sample_fmt = codec.codec->sample_fmts[0];
            codec.bit_rate = 96000;
            codec.time_base = {1, sound.rate};
            codec.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        });
        const ovnxmedia::FrameOwner frame = FrameFor(*track.codec);
        const int64_t end = std::lround(sound.end * sound.rate);
        for (frame->pts = std::lround(sound.start * sound.rate); frame->pts < end;
             frame->pts += frame->nb_samples) {
            Check(av_frame_make_writable(frame.get()), "frame");
            Sound(*frame, video_.seed + number);
            track.Encode(frame.get());
        }
        track.Encode(nullptr);
        return track;
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

    const VariedVideo& video_;
    const Output format_;
};

}  // namespace

void Write(const VariedVideo& video, const std::string& path) {
    av_log_set_level(AV_LOG_ERROR);
    Maker(video, path).Make();
}

}  // namespace made
