#include "libraries/ovnx-media/cut/ClipCheck.h"

#include <algorithm>

#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

// Of a sample; runs may be much longer, and a reader divides them as it likes.
constexpr uint64_t kMostCompared = 64u << 20;

[[noreturn]] void ThrowUnfaithful(const std::string& what) {
    throw Failure(OVNX_MEDIA_UNFAITHFUL, "the clip differs from its source: " + what);
}

std::string_view DescriptionsIn(std::string_view track) {
    return ContentAt(track, {"mdia", "minf", "stbl", "stsd"});
}

void ExpectSameBytes(SourceFile& source, uint64_t from, SourceFile& clip, uint64_t at, uint64_t size) {
    size = std::min(size, kMostCompared);
    if (ReadRange(source, from, size) != ReadRange(clip, at, size)) ThrowUnfaithful("a sample");
}

class Checker {
  public:
    Checker(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan, MediaPlace base,
            int output, const Budget& budget)
        : source_(source),
          tracks_(tracks),
          plan_(plan),
          base_(base),
          clip_(output, budget, {UINT64_MAX, 0}, MediaInput::Trust::OwnTables) {
        boxes_ = ReadMovieFile(clip_.file(), budget);
    }

    void Run() {
        if (clip_.format().nb_streams != tracks_.size()) ThrowUnfaithful("its tracks");
        size_t track = 0;
        for (const BoxView& box : BoxesOf(boxes_.movie))
            if (box.type == "trak" && track < tracks_.size()) Check(box.content, track++);
        if (track != tracks_.size()) ThrowUnfaithful("its tracks");
    }

  private:
    void Check(std::string_view content, size_t number) {
        const ClipTrack& track = tracks_[number];
        if (DescriptionsIn(content) != DescriptionsIn(track.source->content))
            ThrowUnfaithful("a sample description");
        AVStream* const stream = clip_.format().streams[number];
        const int count = avformat_index_get_entries_count(stream);
        if (count < 1) ThrowUnfaithful("a track without samples");
        CheckFirst(track, *avformat_index_get_entry(stream, 0), base_ + FirstChunk(number).place);
        CheckLast(track, *avformat_index_get_entry(stream, count - 1), EndOf(number));
    }

    const Chunk& FirstChunk(size_t track) const {
        return *std::find_if(plan_.chunks.begin(), plan_.chunks.end(),
                             [track](const Chunk& chunk) { return chunk.track == track; });
    }

    uint64_t EndOf(size_t track) const {
        const auto last = std::find_if(plan_.chunks.rbegin(), plan_.chunks.rend(),
                                       [track](const Chunk& chunk) { return chunk.track == track; });
        uint64_t end = base_ + last->place;
        for (size_t i = last->first; i < last->end; ++i)
            end += tracks_[track].samples[i].size;
        return end;
    }

    void CheckFirst(const ClipTrack& track, const AVIndexEntry& entry, uint64_t place) {
        const Sample& sample = track.samples.front();
        const auto size = static_cast<uint32_t>(entry.size);
        if (static_cast<uint64_t>(entry.pos) != place || !HasSize(track, sample, size))
            ThrowUnfaithful("the place of a sample");
        ExpectSameBytes(source_.file(), sample.offset, clip_.file(), place, std::min(size, sample.size));
    }

    void CheckLast(const ClipTrack& track, const AVIndexEntry& entry, uint64_t end) {
        const Sample& sample = track.samples.back();
        const auto size = static_cast<uint32_t>(entry.size);
        if (static_cast<uint64_t>(entry.pos) + size != end || !HasSize(track, sample, size))
            ThrowUnfaithful("the place of a sample");
        const uint32_t compared = std::min(size, sample.size);
        ExpectSameBytes(source_.file(), sample.offset + sample.size - compared, clip_.file(), end - compared,
                        compared);
    }

    static bool HasSize(const ClipTrack& track, const Sample& sample, uint32_t size) {
        return track.source->table.hasRuns || size == sample.size;
    }

    SourceMovie& source_;
    const std::vector<ClipTrack>& tracks_;
    const ChunkPlan& plan_;
    const MediaPlace base_;
    MediaInput clip_;
    MovieFile boxes_;
};

}  // namespace

void CheckClip(SourceMovie& source, const std::vector<ClipTrack>& tracks, const ChunkPlan& plan,
               MediaPlace base, int output, const Budget& budget) {
    try {
        Checker(source, tracks, plan, base, output, budget).Run();
    } catch (const Failure& failure) {
        switch (failure.status()) {
            case OVNX_MEDIA_UNKNOWN_FORMAT:
            case OVNX_MEDIA_DAMAGED:
                ThrowUnfaithful(failure.what());
            default:
                throw;
        }
    }
}

}  // namespace ovnxmedia
