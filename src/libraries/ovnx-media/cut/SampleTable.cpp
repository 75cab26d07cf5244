#include "libraries/ovnx-media/cut/SampleTable.h"

#include <algorithm>

#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/TableRows.h"

namespace ovnxmedia {
namespace {

// The size of the units of uncompressed sound, and of formats with packets of constant size, where the table
// counts what comes out of the decoder. `entry` is the content of the sample description.
RunUnit UnitOf(std::string_view type, media::ByteView entry, uint32_t uniform) {
    const uint32_t version = entry.U16(8);
    if (uniform > 1) return {1, uniform};
    if (version == 1 && entry.U32(28) > 0 && entry.U32(36) > 0) return {entry.U32(28), entry.U32(36)};
    for (const std::string_view each : {"raw ", "twos", "sowt", "NONE"})
        if (type == each && version == 0)
            return {1, uint32_t{entry.U16(16)} * ((uint32_t{entry.U16(18)} + 7) / 8)};
    return {1, uniform};
}

// Tables by their type; of several only the first counts.
Tables TablesOf(std::string_view boxes) {
    Tables tables;
    for (const BoxView& box : BoxesOf(boxes))
        tables.emplace(box.type, box.content);
    return tables;
}

class TableReader {
  public:
    TableReader(std::string_view boxes, bool isSound, size_t most, const Budget& budget)
        : boxes_(boxes), most_(most), budget_(budget), tables_(TablesOf(boxes)) {
        if (isSound) LookForRuns();
    }

    SampleTable Read() {
        // A table of one size for all takes no bytes for them.
        if (sizes_.uniform() == 0) result_.samples.reserve(std::min<uint64_t>(sizes_.count(), most_));
        ReadChunks();
        ReadSync();
        ReadGroups();
        result_.priority = At("sdtp");
        return std::move(result_);
    }

  private:
    std::string_view At(const char* type) const {
        const auto found = tables_.find(type);
        return found == tables_.end() ? std::string_view() : found->second;
    }

    void LookForRuns() {
        const std::string_view stsd = At("stsd");
        const std::vector<BoxView> entries = BoxesOf(stsd.substr(std::min(stsd.size(), kTableStart)));
        const uint32_t uniform = sizes_.uniform();
        if (uniform == 0 || !durations_.IsOne() || !At("ctts").empty() || entries.empty()) return;
        result_.hasRuns = true;
        result_.uniformSize = uniform;
        result_.unit = UnitOf(entries.front().type, entries.front().view(), uniform);
        if (result_.unit.bytes == 0) ThrowDamaged();
    }

    // Walks over the chunks and what each has.
    void ReadChunks() {
        const bool isLarge = At("stco").empty();
        const Rows chunks(At(isLarge ? "co64" : "stco"), isLarge ? 8 : 4);
        const Rows groups(At("stsc"), 12);
        uint64_t group = 0;
        for (uint64_t chunk = 0; chunk < chunks.count() && groups.count() > 0 && number_ < sizes_.count();
             ++chunk) {
            if (chunk % 4096 == 0) budget_.Check();
            while (group + 1 < groups.count() && groups.U32(group + 1) <= chunk + 1)
                ++group;
            const uint64_t offset = isLarge ? chunks.U64(chunk) : chunks.U32(chunk);
            const uint64_t count = std::min<uint64_t>(groups.U32(group, 4), sizes_.count() - number_);
            if (result_.hasRuns)
                AddRun(offset, count, groups.U32(group, 8));
            else
                AddSamples(offset, count, groups.U32(group, 8));
        }
    }

    void Add(const Sample& sample) {
        if (result_.samples.size() == most_) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many samples");
        result_.samples.push_back(sample);
    }

    void AddRun(uint64_t offset, uint64_t count, uint32_t entry) {
        if (count == 0) return;
        if (result_.samples.empty()) delta_ = durations_.Next();
        const uint64_t size = (count + result_.unit.samples - 1) / result_.unit.samples * result_.unit.bytes;
        if (size > UINT32_MAX || count * delta_ > UINT32_MAX) ThrowDamaged();
        Sample run;
        run.offset = offset;
        run.decoded = run.shown = time_;
        run.size = static_cast<uint32_t>(size);
        run.duration = static_cast<uint32_t>(count * delta_);
        run.count = static_cast<uint32_t>(count);
        run.number = static_cast<uint32_t>(number_);
        run.entry = entry;
        Add(run);
        time_ += run.duration;
        number_ += count;
    }

    void AddSamples(uint64_t offset, uint64_t count, uint32_t entry) {
        for (; count > 0; --count) {
            if (number_ % 4096 == 0) budget_.Check();
            Sample sample;
            sample.offset = offset;
            sample.size = sizes_.Of(number_);
            sample.duration = durations_.Next();
            if (sample.duration > INT32_MAX) ThrowDamaged();
            sample.decoded = time_;
            sample.shown = time_;
            if (!shifts_.IsOver()) sample.shown += static_cast<int32_t>(shifts_.Next());
            sample.number = static_cast<uint32_t>(number_++);
            sample.entry = entry;
            Add(sample);
            offset += sample.size;
            time_ += sample.duration;
        }
    }

    void ReadSync() {
        const auto table = tables_.find("stss");
        result_.hasSyncTable = table != tables_.end() && !result_.hasRuns;
        if (!result_.hasSyncTable) {
            for (Sample& sample : result_.samples)
                sample.isSync = true;
            return;
        }
        const auto mark = [this](std::string_view content) {
            const Rows numbers(content, 4);
            for (uint64_t row = 0; row < numbers.count(); ++row)
                if (const uint64_t number = numbers.U32(row); number >= 1 && number <= result_.samples.size())
                    result_.samples[number - 1].isSync = true;
            return numbers.count();
        };
        result_.namesNoSync = mark(table->second) + mark(At("stps")) == 0;
    }

    void ReadGroups() {
        const std::vector<BoxView> boxes = BoxesOf(boxes_);
        for (const BoxView& box : boxes) {
            if (box.type != "sbgp" || result_.hasRuns) continue;
            SampleGroups groups;
            groups.kind = box.view().Sub(4, 4).str();
            const Rows rows(box.content, 8, box.content.substr(0, 1) == std::string_view("\1") ? 16 : 12);
            uint64_t end = 0;
            for (uint64_t row = 0; row < rows.count(); ++row)
                groups.runs.push_back({end += rows.U32(row), rows.U32(row, 4)});
            for (const BoxView& each : boxes)
                if (each.type == "sgpd" && each.view().Sub(4, 4).text() == groups.kind)
                    groups.descriptions = each.content;
            result_.groups.push_back(std::move(groups));
        }
    }

    const std::string_view boxes_;
    const size_t most_;
    const Budget& budget_;
    const Tables tables_;
    const Sizes sizes_{tables_};
    Values durations_{At("stts")};
    Values shifts_{At("ctts")};
    uint32_t delta_ = 0;  // of each sample of a run
    int64_t time_ = 0;
    uint64_t number_ = 0;
    SampleTable result_;
};

}  // namespace

uint32_t SampleGroups::GroupOf(uint32_t number) const {
    const auto run = std::upper_bound(runs.begin(), runs.end(), uint64_t{number},
                                      [](uint64_t each, const Run& other) { return each < other.end; });
    return run == runs.end() ? 0 : run->group;
}

int64_t SampleTable::End() const {
    int64_t end = 0;
    for (const Sample& sample : samples)
        end = std::max(end, sample.end());
    return end;
}

SampleTable ReadSampleTable(std::string_view tables, bool isSound, size_t most, const Budget& budget) {
    return TableReader(tables, isSound, most, budget).Read();
}

}  // namespace ovnxmedia
