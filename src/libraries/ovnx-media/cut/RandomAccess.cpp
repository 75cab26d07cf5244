#include "libraries/ovnx-media/cut/RandomAccess.h"

#include "libraries/media-bytes/ByteView.h"

namespace ovnxmedia {
namespace {

// No encoder takes longer to refresh its pictures.
constexpr uint32_t kMostPictures = 1000;
// A gradual refresh leaves traces where what is new touches what is old; the next one removes them.
constexpr int kRefreshes = 2;

}  // namespace

RandomAccess::Point RandomAccess::GroupPointAt(const Sample& sample) const {
    for (const SampleGroups& groups : track_.table.groups) {
        const uint32_t group = groups.GroupOf(sample.number);
        if (group == 0) continue;
        if (groups.kind == "rap ") return {Kind::Whole, 0};
        if (groups.kind != "roll") continue;
        // The first version of the table does not have the size of its rows.
        const media::ByteView view(groups.descriptions);
        const uint64_t rows = view.StartsWith(std::string_view("\0", 1)) ? 12 : 16;
        const auto distance = static_cast<int16_t>(view.U16(rows + uint64_t{group - 1} * 2));
        if (distance > 0) return {Kind::Gradual, static_cast<uint32_t>(distance)};
    }
    return {};
}

bool RandomAccess::ReadPoint(const Sample& sample, Point& point) const {
    const NalFormat format = FormatOf(sample);
    if (format.coding == NalCoding::Other) return false;
    const AccessUnit unit = ReadAccessUnit(file_, sample, format);
    if (unit.isRefresh)
        point = {Kind::Whole, 0};
    else if (unit.hasRecoveryPoint)
        point = {unit.recoveryPictures > 0 ? Kind::Gradual : Kind::Whole, unit.recoveryPictures};
    else
        return false;
    return true;
}

RandomAccess::Point RandomAccess::PointAt(size_t index) const {
    const Sample& sample = track_.table.samples[index];
    Point point = GroupPointAt(sample);
    const bool isNamed = sample.isSync || point.kind != Kind::None;
    if (!isNamed && !track_.table.namesNoSync) return {};
    // Tables call those points keyframes, too, at which a gradual refresh begins.
    if (ReadPoint(sample, point) || point.kind != Kind::None) return point;
    return {sample.isSync ? Kind::Whole : Kind::None, 0};
}

bool RandomAccess::IsWholeBy(size_t start, uint32_t pictures, size_t wanted) const {
    const std::vector<Sample>& samples = track_.table.samples;
    if (pictures > kMostPictures) return false;
    size_t at = start;
    while (pictures > 0 && ++at <= wanted) {
        const Sample& sample = samples[at];
        const NalFormat format = FormatOf(sample);
        if (format.coding == NalCoding::Other || ReadAccessUnit(file_, sample, format).isReference)
            --pictures;
    }
    return at <= wanted && samples[at].shown <= samples[wanted].shown;
}

NalFormat RandomAccess::FormatOf(const Sample& sample) const {
    return NalFormatOf(track_.EntryType(sample.entry), track_.Entry(sample.entry));
}

bool RandomAccess::IsCounted(size_t index) const {
    const Sample& sample = track_.table.samples[index];
    const NalFormat format = FormatOf(sample);
    return format.coding == NalCoding::H264 && ReadAccessUnit(file_, sample, format).isReference;
}

size_t RandomAccess::StartFor(size_t wanted) const {
    const std::vector<Sample>& samples = track_.table.samples;
    int refreshes = 0;
    for (size_t at = wanted + 1; at-- > 0;) {
        if (samples[at].shown > samples[wanted].shown) continue;
        if (at % 64 == 0) budget_.Check();
        const Point point = PointAt(at);
        if (point.kind == Kind::Whole) return at;
        if (point.kind == Kind::Gradual && IsWholeBy(at, point.pictures, wanted)) ++refreshes;
        if (refreshes == kRefreshes) return at;
    }
    return 0;
}

}  // namespace ovnxmedia
