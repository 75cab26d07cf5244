#include "sample-media/MadeMedia.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include <unistd.h>

#include "sample-media/MadeBoxes.h"
#include "sample-media/Muxing.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

namespace made {
namespace {

constexpr int kFps = 30;
constexpr int kSampleRate = 48000;
constexpr int kDigits = 12;  // of the frame's number, in binary, from the left

using Rgb = std::array<uint8_t, 3>;
// Not as strong as can be: a wrong matrix or range would only cut those off.
constexpr Rgb kCorners[4] = {{190, 60, 60}, {60, 190, 60}, {60, 60, 190}, {190, 190, 190}};
constexpr char kCornerNames[] = "rgbw";

using Codec = ovnxmedia::CodecOwner;

// The rows in the middle show the number, those above and below the corners.
Rgb ColourAt(int number, int x, int y, const Video& video) {
    if (number < video.blackFrames) return {};
    const bool isAbove = y < video.height * 2 / 5;
    if (isAbove || y >= video.height * 3 / 5)
        return kCorners[(isAbove ? 0 : 2) + (x < video.width / 2 ? 0 : 1)];
    const uint8_t grey = number >> (kDigits - 1 - x * kDigits / video.width) & 1 ? 255 : 0;
    return {grey, grey, grey};
}

std::vector<uint8_t> Picture(int number, const Video& video) {
    const size_t stride = static_cast<size_t>(video.width) * 3;
    std::vector<uint8_t> rgb(stride * static_cast<size_t>(video.height));
    uint8_t* at = rgb.data();
    if (video.picture) {
        video.picture(number, at);
        return rgb;
    }
    for (int y = 0; y < video.height; ++y)
        if (y == 0 || y == video.height * 2 / 5 || y == video.height * 3 / 5)
            for (int x = 0; x < video.width; ++x)
                for (const uint8_t sample : ColourAt(number, x, y, video))
                    *at++ = sample;
        else
            at = std::copy_n(at - stride, stride, at);
    return rgb;
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
    constexpr int kUnity = 1 << 16;
    const bool is709 = video.height >= 720 || video.namesMatrix;
    const std::unique_ptr<SwsContext, void (*)(SwsContext*)> scaler(
        Check(sws_getContext(video.width, video.height, AV_PIX_FMT_RGB24, video.width, video.height,
                             static_cast<AVPixelFormat>(frame.format), SWS_POINT, nullptr, nullptr, nullptr),
              "scaler"),
        &sws_freeContext);
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(SWS_CS_DEFAULT), 1,
                             sws_getCoefficients(is709 ? SWS_CS_ITU709 : SWS_CS_ITU601),
                             frame.color_range == AVCOL_RANGE_JPEG, 0, kUnity, kUnity);
    const std::vector<uint8_t> rgb = Picture(number, video);
    const uint8_t* const from[] = {rgb.data()};
    const int stride[] = {video.width * 3};
    Check(sws_scale(scaler.get(), from, stride, 0, video.height, frame.data, frame.linesize), "picture");
    if (video.bitRate > 0) AddNoise(frame, number);
}

Codec VideoEncoder(const Video& video) {
    Codec codec = EncoderOf(video.codec);
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
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
    if (video.namesMatrix) codec->colorspace = AVCOL_SPC_BT709;
    if (video.bitRate > 0) codec->bit_rate = video.bitRate;
    // An encoder ignores options that it does not have.
    av_opt_set(codec->priv_data, "preset", video.bFrames > 0 ? "superfast" : "ultrafast", 0);
    av_opt_set(codec->priv_data, "x264-params", "scenecut=0:open-gop=0:log=-1", 0);
    Check(avcodec_open2(codec.get(), nullptr, nullptr), "video encoder");
    return codec;
}

Codec AudioEncoder() {
    Codec codec = EncoderOf("aac");
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec->sample_rate = kSampleRate;
    codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec->bit_rate = 64000;
    codec->time_base = {1, kSampleRate};
    codec->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    Check(avcodec_open2(codec.get(), nullptr, nullptr), "audio encoder");
    return codec;
}

// Frames up to the time `end`, in the codec's units, each of which `fill` makes and takes `step` of them.
template <typename Fill>
void Encode(Track& track, int64_t end, int64_t step, Fill fill) {
    const ovnxmedia::FrameOwner frame = FrameFor(*track.codec);
    for (; frame->pts < end; frame->pts += step) {
        Check(av_frame_make_writable(frame.get()), "frame");
        fill(*frame);
        track.Encode(frame.get());
    }
    track.Encode(nullptr);
    for (const auto& packet : track.packets)
        if (packet->duration == 0) packet->duration = step;
}

Track VideoTrack(AVFormatContext& format, const Video& video) {
    Track track = AddTrack(format, VideoEncoder(video), video.rotation);
    av_dict_set(&track.stream->metadata, "language", "fra", 0);
    track.stream->sample_aspect_ratio = track.codec->sample_aspect_ratio;
    track.stream->avg_frame_rate = track.codec->framerate;
    Encode(track, video.frames, 1, [&](AVFrame& frame) {
        frame.color_range = track.codec->color_range;
        Paint(frame, static_cast<int>(frame.pts), video);
    });
    const size_t count = track.packets.size();
    for (int round = 1; round < video.repeat; ++round)
        for (size_t i = 0; i < count; ++i) {
            AVPacket* const copy = Check(av_packet_clone(track.packets[i].get()), "packet");
            track.packets.emplace_back(copy);
            copy->pts += int64_t{round} * video.frames;
            copy->dts += int64_t{round} * video.frames;
        }
    return track;
}

// A tone, higher from track to track.
Track SoundTrack(AVFormatContext& format, const Video& video, const std::string& language) {
    Track track = AddTrack(format, AudioEncoder());
    av_dict_set(&track.stream->metadata, "language", language.c_str(), 0);
    const auto loudness = [&video, number = track.stream->index + 1](int64_t at) {
        return video.sound ? video.sound(static_cast<double>(at) / kSampleRate)
                           : 0.3 * std::sin(static_cast<double>(at) * 0.03 * number);
    };
    const int64_t end = int64_t{kSampleRate} * video.frames * video.repeat / kFps;
    Encode(track, end, track.codec->frame_size, [&](AVFrame& frame) {
        for (int i = 0; i < frame.nb_samples; ++i)
            for (uint8_t* channel : {frame.data[0], frame.data[1]})
                reinterpret_cast<float*>(channel)[i] = static_cast<float>(loudness(frame.pts + i));
    });
    return track;
}

void MakeMovie(const Video& video, const std::string& path) {
    const Output format = OutputOf(video.format, path);
    std::vector<Track> tracks;
    if (video.hasVideo) tracks.push_back(VideoTrack(*format, video));
    for (const std::string& language : video.audioLanguages)
        tracks.push_back(SoundTrack(*format, video, language));
    if (!video.creationTime.empty())
        av_dict_set(&format->metadata, "creation_time", video.creationTime.c_str(), 0);
    Mux(*format, tracks);
}

char CornerName(const uint8_t* pixel) {
    const auto isNear = [](uint8_t a, uint8_t b) { return std::abs(a - b) < 10; };
    for (int corner = 0; corner < 4; ++corner)
        if (std::equal(pixel, pixel + 3, kCorners[corner].begin(), isNear)) return kCornerNames[corner];
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

void Write(const Video& video, const std::string& path) {
    av_log_set_level(AV_LOG_ERROR);
    MakeMovie(video, path);
    if (video.moovInFront || !video.tagc.empty()) EditMovie(path, video.moovInFront, video.tagc);
}

std::string Path(const Video& video) {
    static const Folder folder;
    static int count = 0;
    std::string path = folder.path() + "/" + std::to_string(++count);
    Write(video, path);
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
