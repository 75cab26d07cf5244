// Decodes keyframes of one video stream, each for itself.
#pragma once

#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

class KeyframeDecoder {
  public:
    // The caller will scale the frames to `scaled`. Throws Failure when there is no decoder for the stream or
    // its pictures are too large.
    KeyframeDecoder(const AVCodecParameters& parameters, Size scaled);
    // The context holds the decoder's address.
    KeyframeDecoder(const KeyframeDecoder&) = delete;
    KeyframeDecoder& operator=(const KeyframeDecoder&) = delete;

    // False when there is no frame in the packet. Throws Failure when a limit is exceeded.
    bool Decode(const AVPacket& packet, AVFrame& frame);

  private:
    static int GetBuffer(AVCodecContext* codec, AVFrame* frame, int flags) noexcept;

    CodecOwner codec_;
    uint64_t allocated_ = 0;  // for frames, since the last packet
    bool isOver_ = false;
};

}  // namespace ovnxmedia
