#include "libraries/ovnx-media/cut/ChunkPlan.h"

#include <limits>

namespace ovnxmedia {
namespace {

constexpr double kChunkSeconds = 0.25;
constexpr uint64_t kChunkBytes = 1u << 20;

// When a sample is needed, in seconds of the clip.
double TimeOf(const ClipTrack& track, size_t sample) {
    const Edit& first = track.edits.front();
    const int64_t time = track.samples[sample].decoded - first.media + first.start;
    return static_cast<double>(time) / track.source->unit;
}

}  // namespace

ChunkPlan PlanChunks(const std::vector<ClipTrack>& tracks) {
    ChunkPlan plan;
    std::vector<size_t> next(tracks.size(), 0);
    for (;;) {
        size_t chosen = tracks.size();
        double time = std::numeric_limits<double>::infinity();
        for (size_t i = 0; i < tracks.size(); ++i)
            if (next[i] < tracks[i].samples.size() && TimeOf(tracks[i], next[i]) < time) {
                chosen = i;
                time = TimeOf(tracks[i], next[i]);
            }
        if (chosen == tracks.size()) return plan;
        const std::vector<Sample>& samples = tracks[chosen].samples;
        size_t& at = next[chosen];
        Chunk chunk{chosen, at, at, plan.size, 0, samples[at].entry};
        do {
            plan.size += samples[at].size;
            chunk.samples += samples[at].count;
            chunk.end = ++at;
        } while (at < samples.size() && samples[at].entry == chunk.entry &&
                 plan.size - chunk.place < kChunkBytes && TimeOf(tracks[chosen], at) < time + kChunkSeconds);
        plan.chunks.push_back(chunk);
    }
}

}  // namespace ovnxmedia
