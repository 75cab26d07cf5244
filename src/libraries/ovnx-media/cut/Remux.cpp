#include "libraries/ovnx-media/cut/Remux.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/cut/ClipCheck.h"

namespace ovnxmedia {
namespace {

constexpr uint32_t kTicks = 10000000;
// Nothing lasts this long, and it can be scaled.
constexpr uint64_t kLastTick = uint64_t{1} << 52;

MovieTime TimeOf(uint64_t ticks) {
    return {static_cast<int64_t>(std::min(ticks, kLastTick)), kTicks};
}

}  // namespace

uint32_t Remux(int input, int output, const ClipRange& range, const Budget& budget) {
    PrepareFfmpeg();
    SourceMovie source(input, budget);
    const SourceTrack& video = source.Video();
    if (range.start >= range.end) throw Failure(OVNX_MEDIA_EMPTY_RANGE, "the range is empty");
    const MovieTime end = TimeOf(range.end);
    const MovieTime start = FrameStart(video, TimeOf(range.start), range.atKeyframe, source.file(), budget);
    std::vector<ClipTrack> tracks;
    bool hasVideo = false;
    for (const SourceTrack& track : source.tracks()) {
        ClipTrack cut = CutTrack(track, start, end, source.file(), budget);
        hasVideo = hasVideo || (&track == &video && !cut.IsEmpty());
        if (!cut.IsEmpty()) tracks.push_back(std::move(cut));
    }
    if (!hasVideo) throw Failure(OVNX_MEDIA_EMPTY_RANGE, "the range is after the end");
    const ChunkPlan plan = PlanChunks(tracks);
    const ShownRange shown{static_cast<uint64_t>(std::max<int64_t>(start.In(kTicks), 0)), range.end};
    const std::string type = FileTypeOf(source.boxes(), range.asMp4);
    const MediaPlace place = WriteClip(source, tracks, plan, shown, type, output, budget);
    CheckClip(source, tracks, plan, place, output, budget);
    return static_cast<uint32_t>(source.tracks().size() - tracks.size());
}

}  // namespace ovnxmedia
