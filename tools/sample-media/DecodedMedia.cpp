#include "sample-media/DecodedMedia.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

#include "libraries/ovnx-media/Ffmpeg.h"
#include "sample-media/MadeMedia.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace made {
namespace {

void Expect(bool good, const char* what) {
    if (!good) throw std::runtime_error(std::string("cannot play a video: ") + what);
}

int NumberOf(const AVFrame& frame) {
    std::vector<uint8_t> rgb(static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height) * 3);
    uint8_t* const to[] = {rgb.data()};
    const int stride[] = {frame.width * 3};
    SwsContext* scaler =
        sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), frame.width,
                       frame.height, AV_PIX_FMT_RGB24, SWS_POINT, nullptr, nullptr, nullptr);
    Expect(
        scaler && sws_scale(scaler, frame.data, frame.linesize, 0, frame.height, to, stride) == frame.height,
        "scaling");
    sws_freeContext(scaler);
    return Look(rgb.data(), frame.width, frame.height).number;
}

// Of all samples, without the padding of rows.
uint64_t HashOf(const AVFrame& frame) {
    uint64_t hash = 14695981039346656037u;
    const auto format = static_cast<AVPixelFormat>(frame.format);
    for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
        const bool isChroma = plane == 1 || plane == 2;
        const int shift = isChroma ? av_pix_fmt_desc_get(format)->log2_chroma_h : 0;
        const int rows = -(-frame.height >> shift);
        const int bytes = av_image_get_linesize(format, frame.width, plane);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < bytes; ++x)
                hash = (hash ^ frame.data[plane][y * static_cast<ptrdiff_t>(frame.linesize[plane]) + x]) *
                       1099511628211u;
    }
    return hash;
}

float SampleOf(const AVFrame& frame, int at) {
    const int stride =
        av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) ? 1 : frame.ch_layout.nb_channels;
    const auto* bytes = frame.data[0];
    const auto number = static_cast<ptrdiff_t>(at) * stride;
    switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
        case AV_SAMPLE_FMT_S16:
            return static_cast<float>(reinterpret_cast<const int16_t*>(bytes)[number]) / 32768;
        case AV_SAMPLE_FMT_S32:
            return static_cast<float>(reinterpret_cast<const int32_t*>(bytes)[number]) / 2147483648.0F;
        case AV_SAMPLE_FMT_FLT:
            return reinterpret_cast<const float*>(bytes)[number];
        default:
            throw std::runtime_error("cannot play a sound of this format");
    }
}

std::string Describe(const AVStream& stream) {
    std::ostringstream line;
    const AVCodecParameters& parameters = *stream.codecpar;
    line << avcodec_get_name(parameters.codec_id) << ' ' << parameters.width << 'x' << parameters.height
         << ' ' << parameters.sample_rate << " shape " << av_q2d(parameters.sample_aspect_ratio)
         << " disposition " << stream.disposition << " colours " << parameters.color_space << ' '
         << parameters.color_range << ' ' << parameters.color_primaries;
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(stream.metadata, "", entry, AV_DICT_IGNORE_SUFFIX)))
        if (entry->key != std::string("encoder")) line << ' ' << entry->key << '=' << entry->value;
    const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix) line << " turned " << av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
    return line.str() + "\n";
}

// Decodes one track and hands on what it shows.
class Player {
  public:
    Player(const AVStream& stream, Decoded& decoded)
        : stream_(stream),
          decoded_(decoded),
          codec_(avcodec_alloc_context3(avcodec_find_decoder(stream.codecpar->codec_id))),
          frame_(av_frame_alloc()) {
        Expect(avcodec_parameters_to_context(codec_.get(), stream.codecpar) >= 0, "parameters");
        codec_->pkt_timebase = stream.time_base;
        codec_->thread_count = 1;
        // As players do: what is not whole is at most hidden.
        codec_->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
        // Where a decoder makes noise, the same for the same packet.
        av_opt_set_int(codec_.get(), "cons_noisegen", 1, AV_OPT_SEARCH_CHILDREN);
        Expect(avcodec_open2(codec_.get(), nullptr, nullptr) >= 0, "decoder");
    }

    void Send(const AVPacket* packet) {
        if (packet && packet->flags & AV_PKT_FLAG_DISCARD) hidden_.insert({packet->pts, packet->pos});
        Expect(avcodec_send_packet(codec_.get(), packet) >= 0, "packet");
        while (avcodec_receive_frame(codec_.get(), frame_.get()) >= 0) {
            const int64_t shown = frame_->pts != AV_NOPTS_VALUE ? frame_->pts : frame_->best_effort_timestamp;
            // Not every decoder drops what is not to be shown.
            if (hidden_.count({shown, frame_->pkt_pos}) > 0) continue;
            const double time = static_cast<double>(shown) * av_q2d(stream_.time_base);
            if (codec_->codec_type == AVMEDIA_TYPE_VIDEO)
                decoded_.frames.push_back({time, NumberOf(*frame_), HashOf(*frame_)});
            else
                Hear(time);
        }
    }

  private:
    void Hear(double time) const {
        const auto track = static_cast<size_t>(stream_.index);
        std::vector<float>& sound = decoded_.sounds[track];
        const long start = std::lround(time * frame_->sample_rate);
        const long end = start + frame_->nb_samples;
        if (sound.empty()) decoded_.soundStarts[track] = std::max(0.0, time);
        sound.resize(static_cast<size_t>(std::max({0L, end, static_cast<long>(sound.size())})));
        for (long at = std::max(0L, start); at < end; ++at)
            sound[static_cast<size_t>(at)] = SampleOf(*frame_, static_cast<int>(at - start));
    }

    const AVStream& stream_;
    Decoded& decoded_;
    const ovnxmedia::CodecOwner codec_;
    const ovnxmedia::FrameOwner frame_;
    std::set<std::pair<int64_t, int64_t>> hidden_;  // times and places of packets that are only decoded
};

}  // namespace

Decoded Decode(const std::string& path) {
    AVFormatContext* opened = nullptr;
    Expect(avformat_open_input(&opened, path.c_str(), nullptr, nullptr) >= 0, path.c_str());
    const ovnxmedia::InputOwner format(opened);
    Expect(avformat_find_stream_info(opened, nullptr) >= 0, "streams");
    Decoded decoded;
    decoded.duration = static_cast<double>(opened->duration) / AV_TIME_BASE;
    decoded.sounds.resize(opened->nb_streams);
    decoded.soundStarts.resize(opened->nb_streams);
    for (unsigned i = 0; i < opened->nb_chapters; ++i) {
        const AVChapter& chapter = *opened->chapters[i];
        const AVDictionaryEntry* const title = av_dict_get(chapter.metadata, "title", nullptr, 0);
        decoded.chapters.push_back(
            {static_cast<double>(chapter.start) * av_q2d(chapter.time_base), title ? title->value : ""});
    }
    std::vector<std::unique_ptr<Player>> players(opened->nb_streams);
    int video = -1;
    for (unsigned i = 0; i < opened->nb_streams; ++i) {
        const AVStream& stream = *opened->streams[i];
        const AVMediaType type = stream.codecpar->codec_type;
        decoded.tracks += Describe(stream);
        decoded.ids.push_back(stream.id);
        decoded.sampleRates.push_back(stream.codecpar->sample_rate);
        if (type == AVMEDIA_TYPE_VIDEO && video < 0) video = stream.index;
        if (stream.index == video || type == AVMEDIA_TYPE_AUDIO)
            players[i] = std::make_unique<Player>(stream, decoded);
    }
    const ovnxmedia::PacketOwner packet(av_packet_alloc());
    bool shows = false;
    while (av_read_frame(opened, packet.get()) >= 0) {
        const bool isVideo = packet->stream_index == video;
        if (isVideo && !(packet->flags & AV_PKT_FLAG_DISCARD)) shows = true;
        if (isVideo && !shows) ++decoded.hiddenAtStart;
        if (Player* player = players[static_cast<size_t>(packet->stream_index)].get())
            player->Send(packet.get());
        av_packet_unref(packet.get());
    }
    for (const auto& player : players)
        if (player) player->Send(nullptr);
    return decoded;
}

}  // namespace made
