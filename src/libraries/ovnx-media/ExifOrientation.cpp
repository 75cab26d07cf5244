#include "libraries/ovnx-media/ExifOrientation.h"

namespace ovnxmedia {
namespace {

using namespace std::string_view_literals;

// TIFF 6.0, section 2, and Exif 2.32, 4.6.4.
constexpr auto kLittleEndian = "II*\0"sv;
constexpr auto kBigEndian = "MM\0*"sv;
constexpr auto kSegmentStart = "Exif\0\0"sv;
constexpr uint64_t kDirectoryOffsetAt = 4;
constexpr uint64_t kEntrySize = 12;
constexpr uint32_t kOrientationTag = 0x0112;
constexpr uint32_t kShortType = 3;

// Numbers beyond the end are 0, which is no tag, type or orientation.
class Numbers {
  public:
    explicit Numbers(media::ByteView bytes) : bytes_(bytes), isLittle_(bytes.StartsWith(kLittleEndian)) {}

    bool AreTiff() const { return isLittle_ || bytes_.StartsWith(kBigEndian); }
    uint32_t Short(uint64_t at) const { return isLittle_ ? bytes_.Little(at, 2) : bytes_.U16(at); }
    uint32_t Long(uint64_t at) const { return isLittle_ ? bytes_.Little(at, 4) : bytes_.U32(at); }

  private:
    const media::ByteView bytes_;
    const bool isLittle_;
};

Orientation OrientationOf(uint32_t value) {
    switch (value) {
        case 2:
            return {true, false, false};
        case 3:
            return {true, true, false};
        case 4:
            return {false, true, false};
        case 5:
            return {false, false, true};
        case 6:
            return {false, true, true};
        case 7:
            return {true, true, true};
        case 8:
            return {true, false, true};
        default:
            return {};
    }
}

}  // namespace

Orientation ReadExifOrientation(media::ByteView exif) {
    const Numbers numbers(exif);
    if (!numbers.AreTiff()) return {};
    const uint64_t directory = numbers.Long(kDirectoryOffsetAt);
    const uint64_t end = directory + 2 + numbers.Short(directory) * kEntrySize;
    for (uint64_t entry = directory + 2; entry < end && entry < exif.size(); entry += kEntrySize) {
        if (numbers.Short(entry) != kOrientationTag) continue;
        const bool isOneShort = numbers.Short(entry + 2) == kShortType && numbers.Long(entry + 4) == 1;
        return isOneShort ? OrientationOf(numbers.Short(entry + 8)) : Orientation{};
    }
    return {};
}

bool ReadSegmentOrientation(media::ByteView segment, Orientation& orientation) {
    if (!segment.StartsWith(kSegmentStart)) return false;
    orientation = ReadExifOrientation(segment.Sub(kSegmentStart.size()));
    return true;
}

}  // namespace ovnxmedia
