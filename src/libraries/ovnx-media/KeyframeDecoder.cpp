#include "libraries/ovnx-media/KeyframeDecoder.h"

#include <new>
#include <utility>

#include "libraries/ovnx-media/Failure.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace ovnxmedia {
namespace {

// The decoders that are let at foreign bytes, by name: for some formats there are others, which hand the work
// to a device or a driver.
constexpr std::pair<AVCodecID, const char*> kDecoders[] = {
    {AV_CODEC_ID_H264, "h264"},   {AV_CODEC_ID_HEVC, "hevc"}, {AV_CODEC_ID_AV1, "libdav1d"},
    {AV_CODEC_ID_MPEG4, "mpeg4"}, {AV_CODEC_ID_VP8, "vp8"},   {AV_CODEC_ID_VP9, "vp9"},
    {AV_CODEC_ID_MJPEG, "mjpeg"},
};

const AVCodec* DecoderFor(AVCodecID id) {
    for (const auto& [each, name] : kDecoders)
        if (each == id) return avcodec_find_decoder_by_name(name);
    return nullptr;
}

// More than the decoder allocates for a frame: it rounds the sides up, and some decoders add an edge.
uint64_t BytesOf(const AVFrame& frame) {
    constexpr int kEdge = 256;
    const int bytes = av_image_get_buffer_size(static_cast<AVPixelFormat>(frame.format), frame.width + kEdge,
                                               frame.height + kEdge, 64);
    return bytes < 0 ? UINT64_MAX / 2 : static_cast<uint64_t>(bytes);
}

}  // namespace

KeyframeDecoder::KeyframeDecoder(const AVCodecParameters& parameters, Size scaled) {
    const AVCodec* decoder = DecoderFor(parameters.codec_id);
    if (!decoder) throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no decoder for this video");
    codec_.reset(avcodec_alloc_context3(decoder));
    if (!codec_) throw std::bad_alloc();
    if (avcodec_parameters_to_context(codec_.get(), &parameters) < 0) throw std::bad_alloc();
    codec_->opaque = this;
    codec_->get_buffer2 = GetBuffer;
    codec_->max_pixels = OVNX_MEDIA_MAX_PIXELS;
    codec_->skip_frame = AVDISCARD_NONKEY;
    // More threads finish one frame no earlier and cost their start.
    codec_->thread_count = 1;
    codec_->flags |= AV_CODEC_FLAG_LOW_DELAY;
    // What the loop filter smooths is gone anyway once each pixel is the mean of several.
    if (uint64_t{scaled.width} * 2 <= static_cast<uint64_t>(parameters.width))
        codec_->skip_loop_filter = AVDISCARD_ALL;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0)
        throw Failure(OVNX_MEDIA_DAMAGED, "the video's description is damaged");
}

int KeyframeDecoder::GetBuffer(AVCodecContext* codec, AVFrame* frame, int flags) noexcept {
    auto* self = static_cast<KeyframeDecoder*>(codec->opaque);
    self->allocated_ += BytesOf(*frame);
    self->isOver_ = self->allocated_ > OVNX_MEDIA_MAX_ALLOCATION;
    return self->isOver_ ? AVERROR(ENOMEM) : avcodec_default_get_buffer2(codec, frame, flags);
}

bool KeyframeDecoder::Decode(const AVPacket& packet, AVFrame& frame) {
    av_frame_unref(&frame);
    allocated_ = 0;
    // The end after the packet makes the decoder return the frame at once, without waiting for others.
    const bool taken = avcodec_send_packet(codec_.get(), &packet) >= 0;
    const bool got = taken && avcodec_send_packet(codec_.get(), nullptr) >= 0 &&
                     avcodec_receive_frame(codec_.get(), &frame) >= 0;
    avcodec_flush_buffers(codec_.get());
    if (isOver_) throw Failure(OVNX_MEDIA_OVER_LIMIT, "the video's pictures are too large");
    return got && frame.width > 0 && frame.height > 0;
}

}  // namespace ovnxmedia
