#include "libraries/ovnx-media/convert/CodecRules.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

constexpr int kVideos[] = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC,  AV_CODEC_ID_AV1,
                           AV_CODEC_ID_VP9,  AV_CODEC_ID_MPEG4, AV_CODEC_ID_MJPEG};
constexpr int kSounds[] = {AV_CODEC_ID_AAC, AV_CODEC_ID_AC3,  AV_CODEC_ID_EAC3, AV_CODEC_ID_OPUS,
                           AV_CODEC_ID_MP3, AV_CODEC_ID_FLAC, AV_CODEC_ID_ALAC};

template <size_t Count>
bool Contains(const int (&list)[Count], int codec) {
    return std::find(std::begin(list), std::end(list), codec) != std::end(list);
}

}  // namespace

bool IsTaken(const TrackCodec& track) {
    return track.kind == AVMEDIA_TYPE_VIDEO || track.kind == AVMEDIA_TYPE_AUDIO ||
           track.kind == AVMEDIA_TYPE_SUBTITLE;
}

void CheckCodec(const TrackCodec& track) {
    const bool isVideo = track.kind == AVMEDIA_TYPE_VIDEO;
    const bool isSound = track.kind == AVMEDIA_TYPE_AUDIO;
    if ((isVideo && Contains(kVideos, track.codec)) || (isSound && Contains(kSounds, track.codec))) return;
    const std::string what = isVideo ? "video is " : isSound ? "sound is " : "subtitles are ";
    const std::string name = avcodec_get_name(static_cast<AVCodecID>(track.codec));
    throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "its " + what + name + ", which an MP4 does not take");
}

}  // namespace ovnxmedia
