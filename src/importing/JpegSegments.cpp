#include "importing/JpegSegments.h"

#include <string_view>

#include "importing/Splice.h"
#include "plugin-modules/Gallery/src/media/ByteCursor.h"

namespace importing {
namespace {

constexpr uint8_t kStartOfImage = 0xD8;
constexpr uint8_t kEndOfImage = 0xD9;
constexpr uint8_t kStartOfScan = 0xDA;
// A picture has some dozens; the scans of a progressive one are limited by its 64 coefficients.
constexpr size_t kMaxSegments = 10000;

bool IsFrame(uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool IsRestart(uint8_t marker) {
    return marker >= 0xD0 && marker <= 0xD7;
}

class Walk {
  public:
    Walk(media::ByteSource& source, uint64_t size) : cursor_(source), size_(size) {}

    JpegSegments Run() {
        if (!cursor_.Take(2).StartsWith("\xFF\xD8")) throw ImportError("is damaged");
        at_ = 2;
        bool hasFrame = false;
        bool hasScan = false;
        JpegSegments found;
        for (;;) {
            const uint64_t from = at_;
            const uint8_t marker = Marker();
            if (marker == kEndOfImage) break;
            const uint64_t payload = at_ + 2;
            PassSegment();
            if (marker == kStartOfScan) ScanData();
            found.segments.push_back({marker, from, payload, at_});
            if (found.segments.size() > kMaxSegments) throw ImportError("has too many parts");
            hasFrame = hasFrame || IsFrame(marker);
            hasScan = hasScan || marker == kStartOfScan;
        }
        if (!hasFrame || !hasScan) throw ImportError("has no picture");
        found.end = at_;
        return found;
    }

  private:
    media::ByteView Take(size_t count) {
        cursor_.MoveTo(at_);
        const media::ByteView bytes = cursor_.Take(count);
        if (bytes.size() < count) throw ImportError("is cut off");
        at_ += count;
        return bytes;
    }

    uint8_t ByteAt(uint64_t position) {
        cursor_.MoveTo(position);
        const media::ByteView bytes = cursor_.Take(1);
        if (bytes.size() == 0) throw ImportError("is cut off");
        return static_cast<uint8_t>(bytes.text()[0]);
    }

    uint8_t Byte() { return static_cast<uint8_t>(Take(1).text()[0]); }

    // Moves past a marker and what fills up before it.
    uint8_t Marker() {
        if (Byte() != 0xFF) throw ImportError("is damaged");
        uint8_t marker = 0xFF;
        while (marker == 0xFF)
            marker = Byte();
        if (marker < 0xC0 || IsRestart(marker) || marker == kStartOfImage) throw ImportError("is damaged");
        return marker;
    }

    void PassSegment() {
        const uint64_t length = Take(2).U16(0);
        if (length < 2) throw ImportError("is damaged");
        if (length - 2 > size_ - at_) throw ImportError("is cut off");
        at_ += length - 2;
    }

    // Moves to the marker after the data of a scan.
    void ScanData() {
        for (;;) {
            cursor_.MoveTo(at_);
            const media::ByteView bytes = cursor_.Take(media::ByteCursor::kMaxTake);
            const size_t found = bytes.text().find('\xFF');
            if (found == std::string_view::npos) {
                if (bytes.size() < media::ByteCursor::kMaxTake) throw ImportError("is cut off");
                at_ += bytes.size();
                continue;
            }
            at_ += found;
            // What fills up before a marker belongs to it.
            uint64_t end = at_ + 1;
            uint8_t next = ByteAt(end);
            while (next == 0xFF)
                next = ByteAt(++end);
            if (next != 0 && !IsRestart(next)) return;
            at_ = end + 1;
        }
    }

    media::ByteCursor cursor_;
    const uint64_t size_;
    uint64_t at_ = 0;
};

}  // namespace

JpegSegments ReadJpegSegments(media::ByteSource& source, uint64_t size) {
    return Walk(source, size).Run();
}

}  // namespace importing
