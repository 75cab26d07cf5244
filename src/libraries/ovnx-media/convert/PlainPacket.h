// The bytes of packets as an MP4 has them, whatever the container that they come from.
#pragma once

#include <string>
#include <string_view>

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

enum class Framing {
    None,        // as in an MP4
    StartCodes,  // of H.264 and HEVC, ITU-T H.264, annex B: in an MP4 each unit is preceded by its size
    Adts,        // of AAC, ISO/IEC 14496-3, 1.A.3.2: an MP4 has these headers in its sample description
};

Framing FramingOf(const AVCodecParameters& track, bool isTransportStream);

// A part of the packet, or `room`, which is replaced then.
std::string_view PlainBytes(Framing framing, const AVPacket& packet, std::string& room);

}  // namespace ovnxmedia
