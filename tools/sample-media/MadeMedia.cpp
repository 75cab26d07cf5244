#include "sample-media/MadeMedia.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "libraries/ovnx-media/Ffmpeg.h"
#include "sample-media/MadeBoxes.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

namespace made {
namespace {

constexpr int kFps = 30;
constexpr int kSampleRate = 48000;
constexpr int kDigits = 12;  // of the frame's number, in binary, from the left

struct Rgb {
    int r, g, b;
};
constexpr Rgb kCorners[4] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
constexpr char kCornerNames[] = "rgbw";

int Check(int result, const char* what) {
    if (result < 0) throw std::runtime_error(std::string("cannot make a video: ") + what);
    return result;
}

template <typename T>
T* Check(T* object, const char* what) {
    if (!object) throw std::runtime_error(std::string("cannot make a video: ") + what);
    return object;
}

using Packet = ovnxmedia::PacketOwner;
using Frame = ovnxmedia::FrameOwner;
using Codec = ovnxmedia::CodecOwner;

Codec MakeCodec(const char* name) {
    const AVCodec* encoder = Check(avcodec_find_encoder_by_name(name), name);
    Codec codec(Check(avcodec_alloc_context3(encoder), name));
    codec->thread_count = 1;
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return codec;
}

// The rows in the middle, 1, show the number, those above, 0, and below, 2, the corners.
int PartOf(int y, const Video& video) {
    return y < video.height * 2 / 5 ? 0 : y < video.height * 3 / 5 ? 1 : 2;
}

Rgb ColourAt(int number, int x, int y, const Video& video) {
    const int part = PartOf(y, video);
    if (part != 1) return kCorners[part + (x < video.width / 2 ? 0 : 1)];
    const int grey = number >> (kDigits - 1 - x * kDigits / video.width) & 1 ? 255 : 0;
    return {grey, grey, grey};
}

std::array<uint8_t, 3> ToYuv(Rgb colour, const Video& video) {
    const bool is709 = video.height >= 720;
    const double kr = is709 ? 0.2126 : 0.299, kb = is709 ? 0.0722 : 0.114;
    const double y = kr * colour.r + (1 - kr - kb) * colour.g + kb * colour.b;
    const double cb = (colour.b - y) / (2 * (1 - kb)), cr = (colour.r - y) / (2 * (1 - kr));
    const double toLuma = video.fullRange ? 1 : 219 / 255.0, toChroma = video.fullRange ? 1 : 224 / 255.0;
    const auto put = [](double value) {
        return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
    };
    return {put((video.fullRange ? 0 : 16) + y * toLuma), put(128 + cb * toChroma), put(128 + cr * toChroma)};
}

// One row of one plane; a sample covers a square of `step` pixels.
void PaintRow(uint8_t* row, int plane, int y, int step, int number, const Video& video) {
    const bool isBlack = number < video.blackFrames;
    for (int x = 0; x * step < video.width; ++x) {
        const Rgb colour = isBlack ? Rgb{0, 0, 0} : ColourAt(number, x * step, y, video);
        row[x] = ToYuv(colour, video)[static_cast<size_t>(plane)];
    }
}

void AddNoise(AVFrame& frame, int number) {
    uint32_t noise = static_cast<uint32_t>(number) * 2654435761u + 1;
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            noise = noise * 1664525u + 1013904223u;
            uint8_t& luma = frame.data[0][y * static_cast<ptrdiff_t>(frame.linesize[0]) + x];
            luma = static_cast<uint8_t>(std::clamp(luma + static_cast<int>(noise >> 27) - 16, 16, 235));
        }
}

void Paint(AVFrame& frame, int number, const Video& video) {
    for (int plane = 0; plane < 3; ++plane) {
        const int step = plane == 0 ? 1 : 2;
        const auto stride = static_cast<ptrdiff_t>(frame.linesize[plane]);
        int painted = -1;  // the row of the plane that looks as the next ones do
        for (int y = 0; y * step < video.height; ++y) {
            uint8_t* row = frame.data[plane] + y * stride;
            if (painted < 0 || PartOf(y * step, video) != PartOf(painted * step, video))
                PaintRow(row, plane, y * step, step, number, video), painted = y;
            else
                std::memcpy(row, frame.data[plane] + painted * stride,
                            static_cast<size_t>(video.width / step));
        }
    }
    if (video.bitRate > 0) AddNoise(frame, number);
}

Codec VideoEncoder(const Video& video) {
    Codec codec = MakeCodec(video.codec);
    codec->width = video.width;
    codec->height = video.height;
    codec->time_base = {1, kFps};
    codec->framerate = {kFps, 1};
    codec->gop_size = video.keyInterval;
    codec->keyint_min = video.keyInterval;
    codec->max_b_frames = video.bFrames;
    codec->pix_fmt = video.codec == std::string("mjpeg") ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
    codec->color_range = video.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    codec->sample_aspect_ratio = {video.pixelWidth, 1};
    if (video.height >= 720) {
        codec->colorspace = AVCOL_SPC_BT709;
        codec->color_primaries = AVCOL_PRI_BT709;
        codec->color_trc = AVCOL_TRC_BT709;
    }
    if (video.bitRate > 0) codec->bit_rate = video.bitRate;
    // An encoder ignores options that it does not have.
    av_opt_set(codec->priv_data, "preset", video.bFrames > 0 ? "superfast" : "ultrafast", 0);
    av_opt_set(codec->priv_data, "x264-params", "scenecut=0:open-gop=0:log=-1", 0);
    Check(avcodec_open2(codec.get(), nullptr, nullptr), "video encoder");
    return codec;
}

Codec AudioEncoder() {
    Codec codec = MakeCodec("aac");
    codec->sample_rate = kSampleRate;
    codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec->bit_rate = 64000;
    codec->time_base = {1, kSampleRate};
    codec->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    Check(avcodec_open2(codec.get(), nullptr, nullptr), "audio encoder");
    return codec;
}

class Track;
using Packets = std::vector<std::pair<Packet, Track*>>;

// Takes frames, null for the end, and keeps packets.
class Track {
  public:
    Track(Codec codec, AVStream* stream) : codec_(std::move(codec)), stream_(stream) {
        Check(avcodec_parameters_from_context(stream->codecpar, codec_.get()), "parameters");
        stream->time_base = codec_->time_base;
    }

    AVCodecContext& codec() { return *codec_; }
    AVStream& stream() { return *stream_; }

    void Send(const AVFrame* frame, Packets& packets) {
        Check(avcodec_send_frame(codec_.get(), frame), "encoding");
        for (;;) {
            Packet packet(Check(av_packet_alloc(), "packet"));
            if (avcodec_receive_packet(codec_.get(), packet.get()) < 0) return;
            if (packet->duration == 0) packet->duration = codec_->frame_size ? codec_->frame_size : 1;
            packet->stream_index = stream_->index;
            packets.emplace_back(std::move(packet), this);
        }
    }

  private:
    Codec codec_;
    AVStream* stream_;
};

void EncodeVideo(const Video& video, Track& track, Packets& packets) {
    const Frame frame(Check(av_frame_alloc(), "frame"));
    frame->format = track.codec().pix_fmt;
    frame->width = video.width;
    frame->height = video.height;
    frame->color_range = track.codec().color_range;
    Check(av_frame_get_buffer(frame.get(), 0), "picture");
    for (int number = 0; number < video.frames; ++number) {
        Check(av_frame_make_writable(frame.get()), "picture");
        Paint(*frame, number, video);
        frame->pts = number;
        track.Send(frame.get(), packets);
    }
    track.Send(nullptr, packets);
    const size_t once = packets.size();
    for (int round = 1; round < video.repeat; ++round)
        for (size_t i = 0; i < once; ++i) {
            Packet again(Check(av_packet_clone(packets[i].first.get()), "packet"));
            again->pts += int64_t{round} * video.frames;
            again->dts += int64_t{round} * video.frames;
            packets.emplace_back(std::move(again), &track);
        }
}

// A tone, higher from track to track.
void EncodeAudio(const Video& video, int index, Track& track, Packets& packets) {
    const Frame frame(Check(av_frame_alloc(), "frame"));
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    frame->sample_rate = kSampleRate;
    frame->nb_samples = track.codec().frame_size;
    Check(av_frame_get_buffer(frame.get(), 0), "sound");
    const int64_t total = int64_t{kSampleRate} * video.frames * video.repeat / kFps;
    for (int64_t at = 0; at < total; at += frame->nb_samples) {
        Check(av_frame_make_writable(frame.get()), "sound");
        for (int channel = 0; channel < 2; ++channel)
            for (int i = 0; i < frame->nb_samples; ++i)
                reinterpret_cast<float*>(frame->data[channel])[i] =
                    static_cast<float>(0.3 * std::sin(static_cast<double>(at + i) * 0.03 * (index + 1)));
        frame->pts = at;
        track.Send(frame.get(), packets);
    }
    track.Send(nullptr, packets);
}

void Describe(const Video& video, AVStream& stream, const std::string& language) {
    av_dict_set(&stream.metadata, "language", language.c_str(), 0);
    if (stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO) return;
    stream.sample_aspect_ratio = {video.pixelWidth, 1};
    stream.avg_frame_rate = {kFps, 1};
    if (video.rotation == 0) return;
    uint8_t* matrix =
        Check(av_stream_new_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(int32_t)), "");
    av_display_rotation_set(reinterpret_cast<int32_t*>(matrix), video.rotation);
}

void Mux(const Video& video, const std::string& path) {
    AVFormatContext* format = nullptr;
    Check(avformat_alloc_output_context2(&format, nullptr, video.format, path.c_str()), video.format);
    const std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> owner(format,
                                                                             [](AVFormatContext* each) {
                                                                                 avio_closep(&each->pb);
                                                                                 avformat_free_context(each);
                                                                             });
    std::vector<std::unique_ptr<Track>> tracks;
    Packets packets;
    const auto add = [&](Codec codec, const std::string& language) -> Track& {
        tracks.push_back(
            std::make_unique<Track>(std::move(codec), Check(avformat_new_stream(format, nullptr), "stream")));
        Describe(video, tracks.back()->stream(), language);
        return *tracks.back();
    };
    if (video.hasVideo) EncodeVideo(video, add(VideoEncoder(video), "fra"), packets);
    for (size_t i = 0; i < video.audioLanguages.size(); ++i)
        EncodeAudio(video, static_cast<int>(i), add(AudioEncoder(), video.audioLanguages[i]), packets);
    if (!video.creationTime.empty())
        av_dict_set(&format->metadata, "creation_time", video.creationTime.c_str(), 0);
    const auto earlier = [](const auto& a, const auto& b) {
        return av_compare_ts(a.first->dts, a.second->codec().time_base, b.first->dts,
                             b.second->codec().time_base) < 0;
    };
    std::stable_sort(packets.begin(), packets.end(), earlier);
    Check(avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE), path.c_str());
    Check(avformat_write_header(format, nullptr), "header");
    for (const auto& [packet, track] : packets) {
        av_packet_rescale_ts(packet.get(), track->codec().time_base, track->stream().time_base);
        Check(av_write_frame(format, packet.get()), "packet");
    }
    Check(av_write_trailer(format), "trailer");
}

char CornerName(const uint8_t* pixel) {
    for (int corner = 0; corner < 4; ++corner) {
        const Rgb& colour = kCorners[corner];
        if (std::abs(pixel[0] - colour.r) < 40 && std::abs(pixel[1] - colour.g) < 40 &&
            std::abs(pixel[2] - colour.b) < 40)
            return kCornerNames[corner];
    }
    return '.';
}

// Where the files lie, until the process ends.
class Folder {
  public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "media-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~Folder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

std::string Path(const Video& video) {
    static const Folder folder;
    static int count = 0;
    av_log_set_level(AV_LOG_ERROR);
    std::string path = folder.path() + "/" + std::to_string(++count);
    Mux(video, path);
    if (video.moovInFront || !video.tagc.empty()) EditMovie(path, video.moovInFront, video.tagc);
    return path;
}

Shown Look(const uint8_t* rgb, int width, int height) {
    const auto pixel = [&](int x, int y) { return rgb + (static_cast<ptrdiff_t>(y) * width + x) * 3; };
    Shown shown{0, ""};
    for (const int y : {height / 5, height * 4 / 5})
        for (const int x : {width / 4, width * 3 / 4})
            shown.corners += CornerName(pixel(x, y));
    for (int digit = 0; digit < kDigits; ++digit)
        shown.number =
            shown.number << 1 | (pixel((2 * digit + 1) * width / (2 * kDigits), height / 2)[1] > 127);
    if (shown.corners != std::string(kCornerNames, 4)) shown.number = -1;
    return shown;
}

}  // namespace made
