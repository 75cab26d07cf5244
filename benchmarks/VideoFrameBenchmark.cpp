// What the thumbnail of a video costs compared with what is unavoidable: opening the file, going to a tenth
// of it, and decoding and scaling one keyframe. The target is 1.15 times those bare calls (VideoFrame over
// BareCalls, of one run), with at most 30 MiB of memory more; "peak_MiB" is what the process had at most
// above its start.
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "benchmarks/PeakMemory.h"
#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/VideoFrame.h"
#include "sample-media/MadeMedia.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 180;

const std::string& Capture() {
    made::Video video;
    video.width = 1920;
    video.height = 1080;
    video.bitRate = 20000000;
    static const std::string path = made::Path(video);
    return path;
}

void Expect(bool good) {
    if (!good) throw std::runtime_error("a bare call has failed");
}

void DecodeAndScale(AVFormatContext& format, AVCodecContext& codec) {
    const ovnxmedia::PacketOwner packet = ovnxmedia::MakePacket();
    const ovnxmedia::FrameOwner frame = ovnxmedia::MakeFrame();
    do
        Expect(av_read_frame(&format, packet.get()) >= 0);
    while (packet->stream_index != 0);
    Expect(avcodec_send_packet(&codec, packet.get()) >= 0 && avcodec_send_packet(&codec, nullptr) >= 0 &&
           avcodec_receive_frame(&codec, frame.get()) >= 0);
    SwsContext* scaler =
        sws_getContext(frame->width, frame->height, static_cast<AVPixelFormat>(frame->format), kWidth,
                       kHeight, AV_PIX_FMT_RGB24, SWS_AREA, nullptr, nullptr, nullptr);
    const ovnxmedia::FrameOwner scaled = ovnxmedia::MakeFrame();
    scaled->format = AV_PIX_FMT_RGB24;
    scaled->width = kWidth;
    scaled->height = kHeight;
    Expect(scaler && av_frame_get_buffer(scaled.get(), 0) >= 0);
    sws_scale(scaler, frame->data, frame->linesize, 0, frame->height, scaled->data, scaled->linesize);
    sws_freeContext(scaler);
    benchmark::DoNotOptimize(scaled->data[0]);
}

void RunBareCalls(const std::string& path) {
    AVFormatContext* opened = nullptr;
    Expect(avformat_open_input(&opened, path.c_str(), nullptr, nullptr) >= 0);
    const ovnxmedia::InputOwner format(opened);
    const AVStream& stream = *format->streams[0];
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    const ovnxmedia::CodecOwner codec(avcodec_alloc_context3(decoder));
    Expect(codec && avcodec_parameters_to_context(codec.get(), stream.codecpar) >= 0);
    codec->thread_count = 1;
    Expect(avcodec_open2(codec.get(), decoder, nullptr) >= 0 &&
           av_seek_frame(opened, 0, stream.duration / 10, AVSEEK_FLAG_BACKWARD) >= 0);
    DecodeAndScale(*format, *codec);
}

void RunVideoFrame(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    benchmark::DoNotOptimize(ovnxmedia::DecodeVideoFrame(fd, {kWidth, kHeight}, ovnxmedia::Budget()));
    close(fd);
}

void Run(benchmark::State& state, void (*run)(const std::string&)) {
    const std::string& path = Capture();
    const double peak = benchmarks::PeakOf([&] { run(path); });
    while (state.KeepRunning())
        run(path);
    state.counters["peak_MiB"] = peak;
}

BENCHMARK_CAPTURE(Run, BareCalls, RunBareCalls)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Run, VideoFrame, RunVideoFrame)->Unit(benchmark::kMillisecond);

}  // namespace
