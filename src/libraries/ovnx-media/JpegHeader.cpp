#include "libraries/ovnx-media/JpegHeader.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "libraries/media-bytes/ByteView.h"
#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

constexpr auto Number = media::_getU16BigEndianFromBytes;

// ITU-T T.81, table B.1.
constexpr uint8_t kStartOfImage = 0xD8;
constexpr uint8_t kEndOfImage = 0xD9;
constexpr uint8_t kStartOfScan = 0xDA;
constexpr uint8_t kExifSegment = 0xE1;
constexpr uint8_t kProgressiveFrame = 0xC2;
constexpr size_t kComponentsAt = 5;
constexpr size_t kComponentSize = 3;

bool IsFrame(uint8_t marker) {
    const bool isOther = marker == 0xC4 || marker == 0xC8 || marker == 0xCC;
    return marker >= 0xC0 && marker <= 0xCF && !isOther;
}

bool StandsAlone(uint8_t marker) {
    return marker <= 0x01 || (marker >= 0xD0 && marker <= kStartOfImage);
}

class MarkerWalk {
  public:
    explicit MarkerWalk(const FileBytes& file) : at_(file.bytes.get()), end_(at_ + file.size) {}

    // Moves past the next marker; false at the end. Skips what lies between segments, which is mostly the
    // data of scans with its stuffed bytes and restart markers.
    bool Next(uint8_t& marker) {
        while (at_ < end_) {
            at_ = static_cast<const uint8_t*>(std::memchr(at_, 0xFF, static_cast<size_t>(end_ - at_)));
            if (!at_) at_ = end_;
            while (at_ < end_ && *at_ == 0xFF)
                ++at_;
            if (at_ == end_) return false;
            marker = *at_++;
            if (!StandsAlone(marker)) return true;
        }
        return false;
    }

    // Returns the payload of the current segment and moves past it; null for one that is cut short.
    const uint8_t* Segment(size_t& size) {
        if (end_ - at_ < 2) return nullptr;
        const size_t length = size_t{Number(at_)};
        if (length < 2 || length > static_cast<size_t>(end_ - at_)) return nullptr;
        const uint8_t* const payload = at_ + 2;
        at_ += length;
        size = length - 2;
        return payload;
    }

  private:
    const uint8_t* at_;
    const uint8_t* const end_;
};

[[noreturn]] void Refuse(const char* text) {
    throw Failure(OVNX_MEDIA_DAMAGED, text);
}

// Each component is held in blocks of 64 numbers of 16 bits, for the whole blocks that its share of the
// picture touches. Sampling factors go up to 4, and the largest one is the picture's.
uint64_t CoefficientBytes(Size size, const uint8_t* components, unsigned count) {
    unsigned most[2] = {1, 1};
    for (unsigned i = 0; i < count; ++i) {
        const uint8_t factors = components[i * kComponentSize + 1];
        most[0] = std::max<unsigned>(most[0], factors >> 4);
        most[1] = std::max<unsigned>(most[1], factors & 15);
    }
    const uint64_t unitsAcross = size.width / (8 * most[0]) + 1;
    const uint64_t unitsDown = size.height / (8 * most[1]) + 1;
    uint64_t blocks = 0;
    for (unsigned i = 0; i < count; ++i) {
        const uint8_t factors = components[i * kComponentSize + 1];
        blocks += unitsAcross * (factors >> 4) * unitsDown * (factors & 15);
    }
    return blocks * 64 * sizeof(int16_t);
}

void ReadFrame(const uint8_t* frame, size_t size, JpegHeader& header) {
    if (header.components != 0) Refuse("JPEG: a second frame");
    if (size <= kComponentsAt) Refuse("JPEG: a frame cut short");
    header.size = {Number(frame + 3), Number(frame + 1)};
    header.components = frame[kComponentsAt];
    if (header.components == 0 || size != kComponentsAt + 1 + header.components * kComponentSize)
        Refuse("JPEG: a frame of no use");
    header.coefficientBytes = CoefficientBytes(header.size, frame + kComponentsAt + 1, header.components);
}

}  // namespace

JpegHeader ReadJpegHeader(const FileBytes& file) {
    JpegHeader header;
    MarkerWalk walk(file);
    bool needsWhole = false;
    bool hasExif = false;
    for (uint8_t marker = 0; walk.Next(marker) && marker != kEndOfImage;) {
        size_t size = 0;
        const uint8_t* const segment = walk.Segment(size);
        if (!segment) break;
        if (IsFrame(marker)) {
            ReadFrame(segment, size, header);
            needsWhole = marker == kProgressiveFrame || marker == 0xCA;  // 0xCA: with arithmetic coding
        } else if (marker == kStartOfScan) {
            if (header.components == 0 || size == 0) Refuse("JPEG: a scan of no frame");
            ++header.scans;
            needsWhole = needsWhole || segment[0] < header.components;
        } else if (marker == kExifSegment && !hasExif) {
            const std::string_view payload(reinterpret_cast<const char*>(segment), size);
            hasExif = ReadSegmentOrientation(media::ByteView(payload), header.orientation);
        }
    }
    if (header.scans == 0) Refuse("JPEG: no picture");
    if (!needsWhole) header.coefficientBytes = 0;
    return header;
}

}  // namespace ovnxmedia
