#include "sample-media/DecodedMedia.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "libraries/ovnx-media/Ffmpeg.h"
#include "sample-media/MadeMedia.h"

extern "C" {
#include <libavutil/display.h>
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
    Player(const AVStream& stream, Decoded& decoded, std::vector<float>* sound)
        : stream_(stream),
          decoded_(decoded),
          sound_(sound),
          codec_(avcodec_alloc_context3(avcodec_find_decoder(stream.codecpar->codec_id))),
          frame_(av_frame_alloc()) {
        Expect(avcodec_parameters_to_context(codec_.get(), stream.codecpar) >= 0, "parameters");
        codec_->pkt_timebase = stream.time_base;
        codec_->thread_count = 1;
        Expect(avcodec_open2(codec_.get(), nullptr, nullptr) >= 0, "decoder");
    }

    void Send(const AVPacket* packet) {
        Expect(avcodec_send_packet(codec_.get(), packet) >= 0, "packet");
        while (avcodec_receive_frame(codec_.get(), frame_.get()) >= 0) {
            const double time =
                static_cast<double>(frame_->best_effort_timestamp) * av_q2d(stream_.time_base);
            if (!sound_)
                decoded_.frames.push_back({time, NumberOf(*frame_)});
            else
                Hear(time);
        }
    }

  private:
    void Hear(double time) const {
        const auto at = static_cast<size_t>(std::max(0L, std::lround(time * frame_->sample_rate)));
        const auto* samples = reinterpret_cast<const float*>(frame_->data[0]);
        sound_->resize(std::max(sound_->size(), at + static_cast<size_t>(frame_->nb_samples)));
        std::copy_n(samples, frame_->nb_samples, sound_->begin() + static_cast<ptrdiff_t>(at));
    }

    const AVStream& stream_;
    Decoded& decoded_;
    std::vector<float>* const sound_;  // null for a video
    const ovnxmedia::CodecOwner codec_;
    const ovnxmedia::FrameOwner frame_;
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
    std::vector<std::unique_ptr<Player>> players;
    for (unsigned i = 0; i < opened->nb_streams; ++i) {
        const AVStream& stream = *opened->streams[i];
        decoded.tracks += Describe(stream);
        const bool isVideo = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        players.push_back(std::make_unique<Player>(stream, decoded, isVideo ? nullptr : &decoded.sounds[i]));
    }
    const ovnxmedia::PacketOwner packet(av_packet_alloc());
    bool shows = false;
    while (av_read_frame(opened, packet.get()) >= 0) {
        const bool isVideo = packet->stream_index == 0;
        if (isVideo && !(packet->flags & AV_PKT_FLAG_DISCARD)) shows = true;
        if (isVideo && !shows) ++decoded.hiddenAtStart;
        players[static_cast<size_t>(packet->stream_index)]->Send(packet.get());
        av_packet_unref(packet.get());
    }
    for (const auto& player : players)
        player->Send(nullptr);
    return decoded;
}

}  // namespace made
