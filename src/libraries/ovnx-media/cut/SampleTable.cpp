#include "libraries/ovnx-media/cut/SampleTable.h"

#include <algorithm>

#include "libraries/ovnx-media/cut/MemoryBoxes.h"

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

void ReadSync(const Tables& tables, SampleTable& result) {
    const auto table = tables.find("stss");
    result.hasSyncTable = table != tables.end() && !result.hasRuns;
    if (!result.hasSyncTable) {
        for (Sample& sample : result.samples)
            sample.isSync = true;
        return;
    }
    const auto mark = [&](std::string_view content) {
        const Rows numbers(content, 4);
        for (uint64_t row = 0; row < numbers.count(); ++row)
            if (const uint64_t number = numbers.U32(row); number >= 1 && number <= result.samples.size())
                result.samples[number - 1].isSync = true;
        return numbers.count();
    };
    const auto partial = tables.find("stps");
    result.namesNoSync =
        mark(table->second) + mark(partial == tables.end() ? std::string_view() : partial->second) == 0;
}

void ReadGroups(std::string_view tables, SampleTable& result) {
    const std::vector<BoxView> boxes = BoxesOf(tables);
    for (const BoxView& box : boxes) {
        if (box.type != "sbgp") continue;
        SampleGroups groups;
        groups.kind = box.view().Sub(4, 4).str();
        const Rows rows(box.content, 8, box.content.substr(0, 1) == std::string_view("\1") ? 16 : 12);
        uint64_t end = 0;
        for (uint64_t row = 0; row < rows.count(); ++row)
            groups.runs.push_back({end += rows.U32(row), rows.U32(row, 4)});
        for (const BoxView& each : boxes)
            if (each.type == "sgpd" && each.view().Sub(4, 4).text() == groups.kind)
                groups.descriptions = each.content;
        result.groups.push_back(std::move(groups));
    }
}

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

SampleWalk::SampleWalk(std::string_view boxes, bool isSound, const Budget& budget)
    : budget_(budget),
      tables_(TablesOf(boxes)),
      sizes_(tables_),
      durations_(At("stts")),
      shifts_(At("ctts")),
      isLarge_(At("stco").empty()),
      chunks_(At(isLarge_ ? "co64" : "stco"), isLarge_ ? 8 : 4),
      groups_(At("stsc"), 12) {
    if (isSound) LookForRuns();
}

std::string_view SampleWalk::At(const char* type) const {
    const auto found = tables_.find(type);
    return found == tables_.end() ? std::string_view() : found->second;
}

void SampleWalk::LookForRuns() {
    const std::string_view stsd = At("stsd");
    const std::vector<BoxView> entries = BoxesOf(stsd.substr(std::min(stsd.size(), kTableStart)));
    const uint32_t uniform = sizes_.uniform();
    if (uniform == 0 || !durations_.IsOne() || !At("ctts").empty() || entries.empty()) return;
    hasRuns_ = true;
    unit_ = UnitOf(entries.front().type, entries.front().view(), uniform);
    if (unit_.bytes == 0) ThrowDamaged();
    delta_ = durations_.Next();
}

bool SampleWalk::Next(Sample& sample) {
    while (left_ == 0)
        if (!NextChunk()) return false;
    if (number_ % 4096 == 0) budget_.Check();
    sample = {};
    sample.offset = offset_;
    sample.decoded = sample.shown = time_;
    sample.number = static_cast<uint32_t>(number_);
    sample.entry = entry_;
    if (hasRuns_)
        TakeRun(sample);
    else
        TakeSample(sample);
    offset_ += sample.size;
    time_ += sample.duration;
    number_ += sample.count;
    left_ -= sample.count;
    return true;
}

bool SampleWalk::NextChunk() {
    if (chunk_ == chunks_.count() || groups_.count() == 0 || number_ >= sizes_.count()) return false;
    if (chunk_ % 4096 == 0) budget_.Check();
    while (group_ + 1 < groups_.count() && groups_.U32(group_ + 1) <= chunk_ + 1)
        ++group_;
    offset_ = isLarge_ ? chunks_.U64(chunk_) : chunks_.U32(chunk_);
    left_ = std::min<uint64_t>(groups_.U32(group_, 4), sizes_.count() - number_);
    entry_ = groups_.U32(group_, 8);
    ++chunk_;
    return true;
}

// All of the chunk.
void SampleWalk::TakeRun(Sample& run) const {
    const uint64_t size = (left_ + unit_.samples - 1) / unit_.samples * unit_.bytes;
    if (size > UINT32_MAX || left_ * delta_ > UINT32_MAX) ThrowDamaged();
    run.size = static_cast<uint32_t>(size);
    run.duration = static_cast<uint32_t>(left_ * delta_);
    run.count = static_cast<uint32_t>(left_);
}

void SampleWalk::TakeSample(Sample& sample) {
    sample.size = sizes_.Of(number_);
    sample.duration = durations_.Next();
    if (sample.duration > INT32_MAX) ThrowDamaged();
    if (!shifts_.IsOver()) sample.shown += static_cast<int32_t>(shifts_.Next());
}

SampleTable ReadSampleTable(std::string_view boxes, bool isSound, size_t most, const Budget& budget) {
    SampleWalk walk(boxes, isSound, budget);
    SampleTable table;
    table.hasRuns = walk.HasRuns();
    table.unit = walk.unit();
    if (table.hasRuns) table.uniformSize = walk.sizes().uniform();
    // A table of one size for all takes no bytes for them.
    if (walk.sizes().uniform() == 0) table.samples.reserve(std::min<uint64_t>(walk.sizes().count(), most));
    for (Sample sample; walk.Next(sample);) {
        if (table.samples.size() == most) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many samples");
        table.samples.push_back(sample);
    }
    ReadSync(walk.tables(), table);
    if (!table.hasRuns) ReadGroups(boxes, table);
    table.priority = walk.At("sdtp");
    return table;
}

}  // namespace ovnxmedia
