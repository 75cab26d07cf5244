#include "libraries/ovnx-media/VideoFrame.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "libraries/ovnx-media/FrameChoice.h"
#include "libraries/ovnx-media/FrameScaler.h"
#include "libraries/ovnx-media/KeyframeDecoder.h"
#include "libraries/ovnx-media/MediaInput.h"

extern "C" {
#include <libavutil/display.h>
}

namespace ovnxmedia {
namespace {

// Keyframes are looked for among this much at most.
constexpr MediaInput::Limits kLimits{512u << 20, 100000};
// The furthest from square that pixels are believed to be.
constexpr double kMostOblong = 8;

unsigned QuarterTurns(const AVStream& stream) {
    size_t size = 0;
    const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t)) return 0;
    std::array<int32_t, 9> numbers{};
    std::copy_n(matrix, sizeof(numbers), reinterpret_cast<uint8_t*>(numbers.data()));
    const double anticlockwise = av_display_rotation_get(numbers.data());
    if (std::isnan(anticlockwise)) return 0;
    return static_cast<unsigned>(std::lround(-anticlockwise / 90)) & 3;
}

// The size at which the video is meant to be shown, before it is turned.
Size ShownSize(MediaInput& input, AVStream& stream) {
    const auto height = static_cast<uint32_t>(stream.codecpar->height);
    const double shape = av_q2d(av_guess_sample_aspect_ratio(&input.format(), &stream, nullptr));
    const double width = stream.codecpar->width;
    if (!(shape >= 1 / kMostOblong && shape <= kMostOblong)) return {static_cast<uint32_t>(width), height};
    return {std::max(1u, static_cast<uint32_t>(std::lround(width * shape))), height};
}

Size Swapped(Size size, bool swap) {
    return swap ? Size{size.height, size.width} : size;
}

// The time of a tenth of the video, in the stream's units; its beginning where the length is unknown.
int64_t TenthOf(const AVFormatContext& format, const AVStream& stream) {
    int64_t length = stream.duration;
    if (length <= 0 && format.duration > 0)
        length = av_rescale_q(format.duration, AV_TIME_BASE_Q, stream.time_base);
    const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    return start / 2 + std::max<int64_t>(length, 0) / 10 + (start - start / 2);
}

// Seeks there and drops all but keyframes of the stream. The MP4 demuxer then skips the others by its tables,
// without reading them.
void StartAtTenth(MediaInput& input, AVStream& stream) {
    for (unsigned i = 0; i < input.format().nb_streams; ++i)
        input.format().streams[i]->discard = AVDISCARD_ALL;
    stream.discard = AVDISCARD_NONKEY;
    // If it cannot seek, it stays at the beginning.
    input.SeekBack(stream, TenthOf(input.format(), stream));
}

// False when there is none left.
bool NextKeyframe(MediaInput& input, const AVStream& stream, AVPacket& packet) {
    while (input.Read(packet))
        if (packet.stream_index == stream.index && packet.flags & AV_PKT_FLAG_KEY) return true;
    return false;
}

AVStream& VideoOf(MediaInput& input) {
    AVStream* stream = input.Video();
    if (stream && (stream->codecpar->width <= 0 || stream->codecpar->height <= 0)) input.Probe();
    if (!stream || stream->codecpar->width <= 0 || stream->codecpar->height <= 0)
        throw Failure(OVNX_MEDIA_DAMAGED, "there is no video in it");
    const AVCodecParameters& parameters = *stream->codecpar;
    if (uint64_t{static_cast<uint32_t>(parameters.width)} * static_cast<uint32_t>(parameters.height) >
        OVNX_MEDIA_MAX_PIXELS)
        throw Failure(OVNX_MEDIA_OVER_LIMIT, "the video's pictures are too large");
    return *stream;
}

}  // namespace

Picture DecodeVideoFrame(int fd, Size box, const Budget& budget) {
    MediaInput input(fd, budget, kLimits);
    AVStream& stream = VideoOf(input);
    const unsigned turns = QuarterTurns(stream);
    const bool lies = turns % 2 != 0;
    const Size scaled = Swapped(FitInside(Swapped(ShownSize(input, stream), lies), box), lies);
    KeyframeDecoder decoder(*stream.codecpar, scaled);
    StartAtTenth(input, stream);
    const PacketOwner packet = MakePacket();
    const FrameOwner frame = MakeFrame();
    FrameChoice choice;
    while (choice.WantsAnother() && NextKeyframe(input, stream, *packet)) {
        budget.Check();
        if (decoder.Decode(*packet, *frame)) choice.Offer(ScaleFrame(*frame, scaled));
    }
    return Turned(choice.Take(), turns);
}

}  // namespace ovnxmedia
