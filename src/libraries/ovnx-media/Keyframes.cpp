#include "libraries/ovnx-media/Keyframes.h"

#include <algorithm>

#include "libraries/ovnx-media/MediaInput.h"

namespace ovnxmedia {
namespace {

constexpr AVRational kTick{1, 10000000};
// The head, and what leads to the first keyframe.
constexpr MediaInput::Limits kLimits{2 * MediaInput::kMaxHeadBytes, 1000};

AVStream& IndexedVideo(MediaInput& input) {
    if (input.format().iformat != av_find_input_format("mov"))
        throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "no MP4 file");
    AVStream* const video = input.Video();
    if (!video) throw Failure(OVNX_MEDIA_NO_VIDEO, "there is no video in it");
    // The tables of a file in fragments are read piece by piece, and would show its beginning alone.
    const int count = avformat_index_get_entries_count(video);
    if (count < 2 || count < video->nb_frames)
        throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "its frames are in no table");
    return *video;
}

// How much later than they are decoded keyframes are shown, in the stream's units. The tables in memory only
// have the times of decoding; encoders shift all keyframes alike.
int64_t ShownLater(MediaInput& input, AVStream& video) {
    for (unsigned i = 0; i < input.format().nb_streams; ++i)
        input.format().streams[i]->discard = AVDISCARD_ALL;
    video.discard = AVDISCARD_NONKEY;
    const PacketOwner packet = MakePacket();
    while (input.Read(*packet))
        if (packet->stream_index == video.index && packet->flags & AV_PKT_FLAG_KEY)
            return packet->pts == AV_NOPTS_VALUE || packet->dts == AV_NOPTS_VALUE ? 0
                                                                                  : packet->pts - packet->dts;
    return 0;
}

int64_t TimeOfEntry(AVStream& video, int entry) {
    return avformat_index_get_entry(&video, entry)->timestamp;
}

}  // namespace

KeyframeTimes ReadKeyframes(int fd, size_t most, const Budget& budget) {
    MediaInput input(fd, budget, kLimits);
    AVStream& video = IndexedVideo(input);
    const int64_t later = ShownLater(input, video);
    const auto inTicks = [&video](int64_t time) { return av_rescale_q(time, video.time_base, kTick); };
    KeyframeTimes keyframes;
    const int count = avformat_index_get_entries_count(&video);
    for (int i = 0; i < count; ++i) {
        if (i % 4096 == 0) budget.Check();
        const AVIndexEntry& entry = *avformat_index_get_entry(&video, i);
        if (!(entry.flags & AVINDEX_KEYFRAME)) continue;
        if (keyframes.times.size() == most) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many keyframes");
        keyframes.times.push_back(std::max<int64_t>(inTicks(entry.timestamp + later), 0));
    }
    std::sort(keyframes.times.begin(), keyframes.times.end());
    keyframes.frame = inTicks(TimeOfEntry(video, count - 1) - TimeOfEntry(video, 0)) / std::max(count - 1, 1);
    return keyframes;
}

}  // namespace ovnxmedia
