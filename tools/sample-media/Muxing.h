// What the makers of videos share: encoders, tracks, and the file that they end in.
#pragma once

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "libraries/ovnx-media/Ffmpeg.h"

extern "C" {
#include <libavutil/display.h>
}

namespace made {

inline int Check(int result, const std::string& what) {
    if (result < 0) throw std::runtime_error("cannot make a video: " + what);
    return result;
}

template <typename T>
T* Check(T* object, const std::string& what) {
    if (!object) throw std::runtime_error("cannot make a video: " + what);
    return object;
}

struct Closed {
    void operator()(AVFormatContext* format) const {
        avio_closep(&format->pb);
        avformat_free_context(format);
    }
};
using Output = std::unique_ptr<AVFormatContext, Closed>;

inline Output OutputOf(const std::string& format, const std::string& path) {
    AVFormatContext* output = nullptr;
    Check(avformat_alloc_output_context2(&output, nullptr, format.c_str(), path.c_str()), format);
    return Output(output);
}

inline ovnxmedia::CodecOwner EncoderOf(const std::string& name) {
    const AVCodec* const encoder = Check(avcodec_find_encoder_by_name(name.c_str()), name);
    ovnxmedia::CodecOwner codec(Check(avcodec_alloc_context3(encoder), name));
    codec->thread_count = 1;
    return codec;
}

// A frame as the encoder takes it, with memory, at time zero.
inline ovnxmedia::FrameOwner FrameFor(const AVCodecContext& codec) {
    const bool isSound = codec.codec_type == AVMEDIA_TYPE_AUDIO;
    ovnxmedia::FrameOwner frame(Check(av_frame_alloc(), "frame"));
    frame->format = isSound ? static_cast<int>(codec.sample_fmt) : codec.pix_fmt;
    frame->width = codec.width;
    frame->height = codec.height;
    frame->sample_rate = codec.sample_rate;
    if (isSound) frame->nb_samples = codec.frame_size > 0 ? codec.frame_size : 1000;
    frame->ch_layout = codec.ch_layout;
    frame->pts = 0;
    Check(av_frame_get_buffer(frame.get(), 0), "frame");
    return frame;
}

struct Track {
    ovnxmedia::CodecOwner codec;
    AVStream* stream = nullptr;
    std::vector<ovnxmedia::PacketOwner> packets;  // in the codec's units of time

    // No frame: the end.
    void Encode(const AVFrame* frame) {
        Check(avcodec_send_frame(codec.get(), frame), "encoding");
        for (;;) {
            ovnxmedia::PacketOwner packet(Check(av_packet_alloc(), "packet"));
            if (avcodec_receive_packet(codec.get(), packet.get()) < 0) return;
            packets.push_back(std::move(packet));
        }
    }
};

// `codec` is open, `rotation` in degrees clockwise.
inline Track AddTrack(AVFormatContext& format, ovnxmedia::CodecOwner codec, int rotation = 0) {
    AVStream* const stream = Check(avformat_new_stream(&format, nullptr), "stream");
    Check(avcodec_parameters_from_context(stream->codecpar, codec.get()), "parameters");
    stream->time_base = codec->time_base;
    if (rotation != 0) {
        uint8_t* const matrix = Check(
            av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t)), "rotation");
        av_display_rotation_set(reinterpret_cast<int32_t*>(matrix), rotation);
    }
    return {std::move(codec), stream, {}};
}

inline void Mux(AVFormatContext& format, const std::vector<Track>& tracks, AVDictionary** options = nullptr) {
    std::vector<std::pair<AVPacket*, const Track*>> all;
    for (const Track& track : tracks)
        for (const auto& packet : track.packets)
            all.emplace_back(packet.get(), &track);
    std::stable_sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
        return av_compare_ts(a.first->dts, a.second->codec->time_base, b.first->dts,
                             b.second->codec->time_base) < 0;
    });
    Check(avio_open(&format.pb, format.url, AVIO_FLAG_READ_WRITE), format.url);
    Check(avformat_write_header(&format, options), "header");
    for (const auto& [packet, track] : all) {
        packet->stream_index = track->stream->index;
        av_packet_rescale_ts(packet, track->codec->time_base, track->stream->time_base);
        Check(av_write_frame(&format, packet), "packet");
    }
    Check(av_write_trailer(&format), "trailer");
    Check(avio_closep(&format.pb), format.url);
}

}  // namespace made
