#include "libraries/ovnx-media/cut/EditList.h"

#include <algorithm>

#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace ovnxmedia {
namespace {

constexpr uint64_t kMaxEdits = 1000;
constexpr uint32_t kUsualSpeed = 0x10000;

struct Entry {
    int64_t length;  // in units of the movie
    int64_t media;   // -1 for a wait
    uint32_t speed;
};

Entry ReadEntry(media::ByteView list, uint64_t row, bool isLong) {
    const uint64_t at = 8 + row * (isLong ? 20 : 12);
    if (isLong)
        return {static_cast<int64_t>(list.U64(at)), static_cast<int64_t>(list.U64(at + 8)),
                list.U32(at + 16)};
    return {list.U32(at), static_cast<int32_t>(list.U32(at + 4)), list.U32(at + 8)};
}

void Check(const Entry& entry) {
    if (entry.length < 0 || entry.length > kFurthest || entry.media < -1 || entry.media > kFurthest)
        ThrowDamaged();
    if (entry.media >= 0 && entry.speed != kUsualSpeed)
        throw Failure(OVNX_MEDIA_UNKNOWN_FORMAT, "it changes its speed within");
}

int64_t Scaled(int64_t time, uint32_t to, uint32_t from) {
    const int64_t scaled = av_rescale(time, to, from);
    if (scaled > kFurthest || scaled < -kFurthest) ThrowDamaged();
    return scaled;
}

}  // namespace

std::vector<Edit> ReadEdits(std::string_view track, uint32_t trackUnit, uint32_t movieUnit) {
    const media::ByteView list(ContentAt(track, {"edts", "elst"}));
    const bool isLong = list.StartsWith("\1");
    const uint64_t count = std::min<uint64_t>(list.U32(4), list.size() / (isLong ? 20 : 12));
    if (count > kMaxEdits) throw Failure(OVNX_MEDIA_OVER_LIMIT, "too many edits");
    if (count == 0) return {{0, 0, kFurthest}};
    std::vector<Edit> edits;
    int64_t passed = 0;
    for (uint64_t row = 0; row < count; ++row) {
        const Entry entry = ReadEntry(list, row, isLong);
        Check(entry);
        const int64_t start = Scaled(passed, trackUnit, movieUnit);
        passed = std::min(passed + entry.length, kFurthest);
        // Files in fragments do not know how long they are.
        const bool isOpen = entry.length == 0 && row + 1 == count;
        if (entry.media >= 0)
            edits.push_back(
                {start, entry.media, isOpen ? kFurthest : Scaled(passed, trackUnit, movieUnit) - start});
    }
    return edits;
}

std::string WriteEdits(const std::vector<Edit>& edits, uint32_t trackUnit, uint32_t movieUnit) {
    std::vector<Entry> entries;
    int64_t passed = 0;
    bool isLong = false;
    const auto add = [&](int64_t from, int64_t to, int64_t media) {
        if (to <= from) return;
        entries.push_back({to - from, media, kUsualSpeed});
        isLong = isLong || std::max(to - from, media) > INT32_MAX;
    };
    for (const Edit& edit : edits) {
        const int64_t start = Scaled(edit.start, movieUnit, trackUnit);
        const int64_t end = Scaled(edit.end(), movieUnit, trackUnit);
        add(passed, start, -1);
        add(start, end, edit.media);
        passed = std::max(passed, end);
    }
    std::string list;
    AppendNumber(list, 4, isLong ? 1u << 24 : 0);
    AppendNumber(list, 4, entries.size());
    for (const Entry& entry : entries) {
        AppendNumber(list, isLong ? 8 : 4, static_cast<uint64_t>(entry.length));
        AppendNumber(list, isLong ? 8 : 4, static_cast<uint64_t>(entry.media));
        AppendNumber(list, 4, entry.speed);
    }
    std::string box;
    AppendBox(box, "elst", list);
    std::string all;
    AppendBox(all, "edts", box);
    return all;
}

}  // namespace ovnxmedia
