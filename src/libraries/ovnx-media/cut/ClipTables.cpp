#include "libraries/ovnx-media/cut/ClipTables.h"

#include <algorithm>

#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/TableText.h"

namespace ovnxmedia {
namespace {

// What may precede the media in the file, so that their place can be written before it is known.
constexpr uint64_t kMostInFront = 1u << 30;

class TableWriter {
  public:
    TableWriter(const ClipTrack& track, size_t index, const ChunkPlan& plan, uint64_t base)
        : source_(*track.source),
          samples_(track.samples),
          index_(index),
          plan_(plan),
          base_(base),
          shift_(ShiftOf(track)) {}

    std::string Write() {
        const std::string_view source = ContentAt(source_.content, {"mdia", "minf", "stbl"});
        for (const BoxView& box : BoxesOf(source))
            if (box.type == "stsd") out_ += box.whole;
        WriteDurations();
        WriteShifts();
        WriteSync();
        WritePriority();
        for (const SampleGroups& groups : source_.table.groups)
            WriteGroups(groups);
        WriteChunks();
        WriteSizes();
        WritePlaces();
        return std::move(out_);
    }

  private:
    void WriteDurations() {
        RunRows rows;
        for (size_t i = 0; i < samples_.size(); ++i) {
            const Sample& sample = samples_[i];
            const int64_t duration = i + 1 < samples_.size() && sample.count == 1
                                         ? samples_[i + 1].decoded - sample.decoded
                                         : sample.duration / sample.count;
            if (duration < 0 || duration > UINT32_MAX) ThrowDamaged();
            rows.Add(sample.count, static_cast<uint32_t>(duration));
        }
        rows.AppendTo(out_, "stts", 0);
    }

    void WriteShifts() {
        RunRows rows;
        bool isShifted = false;
        for (const Sample& sample : samples_) {
            const int64_t shift = sample.shown - sample.decoded + shift_.shown;
            if (shift > INT32_MAX) ThrowDamaged();
            isShifted = isShifted || shift != 0;
            rows.Add(sample.count, static_cast<uint32_t>(shift));
        }
        if (isShifted) rows.AppendTo(out_, "ctts", 0);
    }

    // The first sample is where decoding begins, whatever the source calls it.
    void WriteSync() {
        std::string rows;
        size_t count = 0;
        for (size_t i = 0; i < samples_.size(); ++i)
            if (i == 0 || samples_[i].isSync) {
                AppendNumber(rows, 4, i + 1);
                ++count;
            }
        if (count < samples_.size() && !source_.table.hasRuns) AppendTable(out_, "stss", 0, count, rows);
    }

    void WritePriority() {
        const std::string_view source = source_.table.priority;
        if (source.size() <= 4 || source_.table.hasRuns) return;
        std::string content(source.substr(0, 4));
        for (const Sample& sample : samples_)
            content += sample.number < source.size() - 4 ? source[4 + sample.number] : '\0';
        AppendBox(out_, "sdtp", content);
    }

    void WriteGroups(const SampleGroups& groups) {
        RunRows rows;
        bool hasAny = false;
        for (const Sample& sample : samples_) {
            const uint32_t group = groups.GroupOf(sample.number);
            hasAny = hasAny || group != 0;
            rows.Add(1, group);
        }
        if (!hasAny || groups.descriptions.empty()) return;
        AppendBox(out_, "sgpd", groups.descriptions);
        std::string content(4, '\0');
        content += groups.kind;
        rows.AppendTo(content);
        AppendBox(out_, "sbgp", content);
    }

    void WriteChunks() {
        std::string rows;
        uint64_t count = 0;
        uint32_t number = 0;
        const Chunk* before = nullptr;
        for (const Chunk& chunk : plan_.chunks) {
            if (chunk.track != index_) continue;
            ++number;
            const bool isSame = before && before->samples == chunk.samples && before->entry == chunk.entry;
            before = &chunk;
            if (isSame) continue;
            ++count;
            AppendNumber(rows, 4, number);
            AppendNumber(rows, 4, chunk.samples);
            AppendNumber(rows, 4, chunk.entry);
        }
        AppendTable(out_, "stsc", 0, count, rows);
    }

    void WriteSizes() {
        std::string content(4, '\0');
        AppendNumber(content, 4, source_.table.uniformSize);
        uint64_t count = 0;
        for (const Sample& sample : samples_)
            count += sample.count;
        AppendNumber(content, 4, count);
        if (!source_.table.hasRuns)
            for (const Sample& sample : samples_)
                AppendNumber(content, 4, sample.size);
        AppendBox(out_, "stsz", content);
    }

    void WritePlaces() {
        const bool isLarge = plan_.size > UINT32_MAX - kMostInFront;
        std::string rows;
        uint64_t count = 0;
        for (const Chunk& chunk : plan_.chunks) {
            if (chunk.track != index_) continue;
            AppendNumber(rows, isLarge ? 8 : 4, base_ + chunk.place);
            ++count;
        }
        AppendTable(out_, isLarge ? "co64" : "stco", 0, count, rows);
    }

    const SourceTrack& source_;
    const std::vector<Sample>& samples_;
    const size_t index_;
    const ChunkPlan& plan_;
    const uint64_t base_;
    const TimeShift shift_;
    std::string out_;
};

}  // namespace

TimeShift ShiftOf(const ClipTrack& track) {
    int64_t latest = 0;
    for (const Sample& sample : track.samples)
        latest = std::max(latest, sample.decoded - sample.shown);
    return {track.samples.front().decoded, latest};
}

std::string WriteTables(const ClipTrack& track, size_t index, const ChunkPlan& plan, uint64_t base) {
    return TableWriter(track, index, plan, base).Write();
}

}  // namespace ovnxmedia
