// Which codecs an MP4 file takes, of those that the product's readers and browsers know there.
#pragma once

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

// What the track holds, by its number in FFmpeg's parameters.
struct TrackCodec {
    int kind;   // of enum AVMediaType
    int codec;  // of enum AVCodecID
};

// Whether the track is part of a recording: pictures, sound and texts are, data for tools and fonts are not.
bool IsTaken(const TrackCodec& track);

// Throws Failure with OVNX_MEDIA_UNKNOWN_FORMAT, and the name of the codec, when an MP4 does not take it.
void CheckCodec(const TrackCodec& track);

}  // namespace ovnxmedia
