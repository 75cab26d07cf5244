// The tables of a track, against a form that expands each of them sample by sample; and what the units of a
// sample say. The first byte chooses between sound and pictures.
#include <chrono>
#include <vector>

#include "fuzz/Plain.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/SampleTable.h"

namespace {

using plain::At;
using plain::Big;
using plain::Demand;

constexpr size_t kMost = 5000;

uint64_t U32(std::string_view table, uint64_t at) {
    const std::string_view bytes = At(table, at, 4);
    return bytes.size() == 4 ? Big(bytes) : 0;
}

// A row of a table of pairs for the sample `number`: the value of the run that it is in, or of the last one.
uint64_t ValueFor(std::string_view table, uint64_t number, bool& isOver) {
    uint64_t value = 0;
    uint64_t end = 0;
    for (uint64_t row = 0; row < U32(table, 4) && 16 + row * 8 <= table.size(); ++row) {
        value = U32(table, 12 + row * 8);
        end += U32(table, 8 + row * 8);
        if (number < end) return value;
    }
    isOver = true;
    return value;
}

class Expanded {
  public:
    explicit Expanded(std::string_view boxes) : boxes_(boxes) {}

    std::string_view Table(std::string_view type) const {
        for (const ovnxmedia::BoxView& box : ovnxmedia::BoxesOf(boxes_))
            if (box.type == type) return box.content;
        return {};
    }
    void Check(const ovnxmedia::SampleTable& table) const {
        int64_t time = 0;
        uint64_t offset = 0;
        for (size_t i = 0; i < table.samples.size(); ++i) {
            const ovnxmedia::Sample& sample = table.samples[i];
            Demand(sample.number == i && sample.count == 1 && sample.decoded == time);
            bool isOver = false;
            Demand(sample.duration == ValueFor(durations_, i, isOver));
            isOver = false;
            const auto shift = static_cast<int32_t>(ValueFor(shifts_, i, isOver));
            Demand(isOver || sample.shown == time + shift);
            // Samples of a chunk lie side by side.
            if (i > 0 && sample.offset != offset) Demand(BeginsChunk(sample.offset));
            offset = sample.offset + sample.size;
            time += sample.duration;
        }
    }

  private:
    bool BeginsChunk(uint64_t offset) const {
        const size_t width = narrow_.empty() ? 8 : 4;
        const std::string_view table = narrow_.empty() ? wide_ : narrow_;
        for (uint64_t at = 8; at + width <= table.size(); at += width)
            if (Big(table.substr(at, width)) == offset) return true;
        return false;
    }

    const std::string_view boxes_;
    const std::string_view durations_ = Table("stts");
    const std::string_view shifts_ = Table("ctts");
    const std::string_view narrow_ = Table("stco");
    const std::string_view wide_ = Table("co64");
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string_view boxes(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        const ovnxmedia::Budget budget(std::chrono::seconds(20));
        const ovnxmedia::SampleTable table =
            ovnxmedia::ReadSampleTable(boxes, data[0] % 2 != 0, kMost, budget);
        Demand(table.samples.size() <= kMost);
        if (!table.hasRuns) Expanded(boxes).Check(table);
        uint64_t number = 0;
        for (const ovnxmedia::Sample& sample : table.samples) {
            Demand(sample.number == number);
            number += sample.count;
            for (const ovnxmedia::SampleGroups& groups : table.groups)
                groups.GroupOf(sample.number);
        }
    } catch (const ovnxmedia::Failure&) {
        return 0;
    }
    return 0;
}
