#include "libraries/ovnx-media/FrameScaler.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "libraries/ovnx-media/Failure.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace ovnxmedia {
namespace {

using ScalerOwner = std::unique_ptr<SwsContext, decltype(&sws_freeContext)>;

// libswscale averages a limited number of pixels, so larger reductions are made in steps.
constexpr int kMostAtOnce = 128;

bool IsFullRange(const AVFrame& frame) {
    switch (frame.format) {
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ444P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ411P:
            return true;
        default:
            return NumberOf(frame.color_range) == AVCOL_RANGE_JPEG;
    }
}

// Where the video names no matrix, or one that does not exist, players choose one by its height.
int MatrixOf(const AVFrame& frame) {
    const int named = NumberOf(frame.colorspace);
    if (named > AVCOL_SPC_RGB && named < AVCOL_SPC_NB && named != AVCOL_SPC_UNSPECIFIED) return named;
    return frame.height >= 720 ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

FrameOwner Step(const AVFrame& from, int width, int height) {
    FrameOwner to = MakeFrame();
    to->format = AV_PIX_FMT_RGB24;
    to->width = width;
    to->height = height;
    if (av_frame_get_buffer(to.get(), 0) < 0) throw std::bad_alloc();
    const auto format = static_cast<AVPixelFormat>(from.format);
    const ScalerOwner scaler(sws_getContext(from.width, from.height, format, width, height, AV_PIX_FMT_RGB24,
                                            SWS_AREA, nullptr, nullptr, nullptr),
                             &sws_freeContext);
    if (!scaler) throw Failure(OVNX_MEDIA_DAMAGED, "the video's pictures cannot be scaled");
    constexpr int kUnity = 1 << 16;
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(MatrixOf(from)), IsFullRange(from),
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, kUnity, kUnity);
    if (sws_scale(scaler.get(), from.data, from.linesize, 0, from.height, to->data, to->linesize) != height)
        throw Failure(OVNX_MEDIA_DAMAGED, "the video's pictures cannot be scaled");
    return to;
}

int Nearer(int from, int to) {
    return std::max(to, (from + kMostAtOnce - 1) / kMostAtOnce);
}

}  // namespace

Picture ScaleFrame(const AVFrame& frame, Size size) {
    const int width = static_cast<int>(size.width);
    const int height = static_cast<int>(size.height);
    FrameOwner scaled = Step(frame, Nearer(frame.width, width), Nearer(frame.height, height));
    while (scaled->width != width || scaled->height != height)
        scaled = Step(*scaled, Nearer(scaled->width, width), Nearer(scaled->height, height));
    Picture picture{size, 3, Samples(size_t{size.width} * size.height * 3)};
    for (size_t row = 0; row < size.height; ++row)
        std::memcpy(&picture.samples[row * picture.Stride()],
                    scaled->data[0] + row * static_cast<size_t>(scaled->linesize[0]), picture.Stride());
    return picture;
}

Picture Turned(Picture picture, unsigned quarters) {
    if (quarters == 0) return picture;
    const uint32_t width = picture.size.width;
    const uint32_t height = picture.size.height;
    const bool lies = quarters % 2 != 0;
    Picture turned{lies ? Size{height, width} : picture.size, 3, Samples(picture.samples.size())};
    const uint8_t* from = picture.samples.data();
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x, from += 3) {
            const uint32_t toX = quarters == 1 ? height - 1 - y : quarters == 2 ? width - 1 - x : y;
            const uint32_t toY = quarters == 1 ? x : quarters == 2 ? height - 1 - y : width - 1 - x;
            std::copy_n(from, 3, &turned.samples[toY * turned.Stride() + size_t{toX} * 3]);
        }
    return turned;
}

}  // namespace ovnxmedia
