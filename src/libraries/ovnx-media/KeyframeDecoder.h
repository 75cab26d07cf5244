// Decodes keyframes of one video stream, each for itself.
#pragma once

#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

class KeyframeDecoder {
  public:
    // Frames of this stream are to be scaled to the size given. Throws Failure when there is no decoder for
    // it or its pictures are too large.
    KeyframeDecoder(const AVCodecParameters& parameters, Size scaled);
    // The context knows the decoder's place.
    KeyframeDecoder(const KeyframeDecoder&) = delete;
    KeyframeDecoder& operator=(const KeyframeDecoder&) = delete;

    // False when the packet gives no frame. Throws Failure where a limit is met.
    bool Decode(const AVPacket& packet, AVFrame& frame);

  private:
    static int GetBuffer(AVCodecContext* codec, AVFrame* frame, int flags) noexcept;

    CodecOwner codec_;
    uint64_t allocated_ = 0;  // for frames, since the last packet
    bool isOver_ = false;
};

}  // namespace ovnxmedia
