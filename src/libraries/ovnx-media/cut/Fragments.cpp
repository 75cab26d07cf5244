#include "libraries/ovnx-media/cut/Fragments.h"

#include <algorithm>
#include <map>
#include <string>

#include "libraries/ovnx-media/MediaInput.h"
#include "libraries/ovnx-media/cut/EditList.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"
#include "libraries/ovnx-media/cut/MovieFile.h"

namespace ovnxmedia {
namespace {

// What holds for samples that do not say otherwise.
struct Defaults {
    uint32_t entry = 1;
    uint32_t duration = 0;
    uint32_t size = 0;
    uint32_t flags = 0;
};

constexpr uint32_t kIsNoSync = 0x10000;

// Takes the fields of a header or row one after the other, where flags say that they are there.
class Fields {
  public:
    Fields(media::ByteView view, uint64_t at) : view_(view), at_(at) {}

    bool IsOver() const { return at_ >= view_.size(); }
    void Take(bool isThere, uint32_t& value) {
        if (!isThere) return;
        value = view_.U32(at_);
        at_ += 4;
    }
    void Take(bool isThere, uint64_t& value) {
        if (!isThere) return;
        value = view_.U64(at_);
        at_ += 8;
    }

  private:
    media::ByteView view_;
    uint64_t at_;
};

uint32_t FlagsOf(media::ByteView view) {
    return view.U32(0) & 0xffffff;
}

class FragmentReader {
  public:
    FragmentReader(std::string_view movie, const TrackFinder& find, size_t most, const Budget& budget)
        : find_(find), most_(most), budget_(budget) {
        for (const BoxView& box : BoxesOf(ContentAt(movie, {"mvex"})))
            if (box.type == "trex")
                defaults_[box.view().U32(4)] = {box.view().U32(8), box.view().U32(12), box.view().U32(16),
                                                box.view().U32(20)};
    }

    void Read(std::string_view content, uint64_t offset) {
        // Where the data of the next track lies, unless it says so itself.
        uint64_t dataAt = offset;
        for (const BoxView& box : BoxesOf(content))
            if (box.type == "traf") ReadTrack(box.content, offset, dataAt);
    }

  private:
    void ReadTrack(std::string_view content, uint64_t fragmentAt, uint64_t& dataAt) {
        const media::ByteView header(ContentAt(content, {"tfhd"}));
        const uint32_t flags = FlagsOf(header);
        const uint32_t id = header.U32(4);
        std::vector<Sample>* const samples = find_(id);
        if (!samples) return;
        Defaults defaults = defaults_[id];
        uint64_t base = flags & 0x20000 ? fragmentAt : dataAt;
        Fields fields(header, 8);
        fields.Take(flags & 1, base);
        fields.Take(flags & 2, defaults.entry);
        fields.Take(flags & 8, defaults.duration);
        fields.Take(flags & 0x10, defaults.size);
        fields.Take(flags & 0x20, defaults.flags);
        int64_t time = samples->empty() ? 0 : samples->back().decoded + samples->back().duration;
        if (const media::ByteView start(ContentAt(content, {"tfdt"})); start.size() >= 8)
            time = static_cast<int64_t>(start.StartsWith("\1") ? start.U64(4) : start.U32(4));
        uint64_t place = base;
        for (const BoxView& box : BoxesOf(content))
            if (box.type == "trun") ReadRun(box.view(), defaults, base, place, time, *samples);
        dataAt = place;
    }

    void ReadRun(media::ByteView run, const Defaults& defaults, uint64_t base, uint64_t& place, int64_t& time,
                 std::vector<Sample>& samples) {
        const uint32_t flags = FlagsOf(run);
        const uint32_t count = run.U32(4);
        uint32_t offset = 0;
        Defaults first = defaults;
        Fields fields(run, 8);
        fields.Take(flags & 1, offset);
        fields.Take(flags & 4, first.flags);
        if (flags & 1) place = base + static_cast<uint64_t>(static_cast<int32_t>(offset));
        for (uint32_t i = 0; i < count; ++i) {
            if (flags & 0xf00 && fields.IsOver()) ThrowDamaged();
            Defaults own = i == 0 ? first : defaults;
            uint32_t shift = 0;
            fields.Take(flags & 0x100, own.duration);
            fields.Take(flags & 0x200, own.size);
            fields.Take(flags & 0x400, own.flags);
            fields.Take(flags & 0x800, shift);
            Add(own, static_cast<int32_t>(shift), place, time, samples);
        }
    }

    void Add(const Defaults& own, int32_t shift, uint64_t& place, int64_t& time,
             std::vector<Sample>& samples) {
        if (count_++ == most_) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many samples");
        if (count_ % 4096 == 0) budget_.Check();
        if (time < -kFurthest || time > kFurthest || own.duration > INT32_MAX) ThrowDamaged();
        Sample sample;
        sample.offset = place;
        sample.shown = time + shift;
        // Some writers let fragments overlap by rounding.
        sample.decoded = samples.empty() ? time : std::max(time, samples.back().decoded);
        sample.size = own.size;
        sample.duration = own.duration;
        sample.number = static_cast<uint32_t>(samples.size());
        sample.entry = own.entry;
        sample.isSync = (own.flags & kIsNoSync) == 0;
        samples.push_back(sample);
        place += own.size;
        time += own.duration;
    }

    const TrackFinder& find_;
    const size_t most_;
    const Budget& budget_;
    std::map<uint32_t, Defaults> defaults_;  // by the tracks' ids
    size_t count_ = 0;
};

}  // namespace

void ReadFragments(SourceFile& file, const std::vector<media::Box>& fragments, std::string_view movie,
                   const TrackFinder& find, size_t most, const Budget& budget) {
    FragmentReader reader(movie, find, most, budget);
    for (const media::Box& fragment : fragments) {
        budget.Check();
        if (fragment.size > MediaInput::kMaxHeadBytes)
            throw Failure(OVNX_MEDIA_OVER_LIMIT, "too large a head");
        reader.Read(ReadRange(file, fragment.content(), fragment.end() - fragment.content()),
                    fragment.offset);
    }
}

}  // namespace ovnxmedia
