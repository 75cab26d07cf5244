#include "plugin-modules/Gallery/src/media/JpegWalk.h"

#include <algorithm>
#include <array>

#include "base/Words.h"

namespace media {
namespace {

constexpr size_t kBlockSize = 512;
constexpr size_t kLastScanned = 496;  // a tag with its count and offset fits from here
constexpr uint64_t kMaxPixels = 0x4000000;

// The subtypes that a tool writes as plain text somewhere in the block. In the order of testing.
constexpr std::string_view kSubTypes[] = {"SuperResolution", "360Mono", "Stereo", "360Stereo"};

// One entry of a TIFF directory. Only big-endian data is looked for: the tools write no other.
struct Entry {
    uint32_t count;
    uint64_t value;  // its position in the block, which may lie after the end
};

// Marks the positions, of sixteen, at which anything that the scan looks for may begin, as far as one byte
// says: the first of a subtype, or the second of a tag or of a TIFF header.
std::array<KXP::Word, 2> Beginnings(const char* bytes) {
    return KXP::MarksOf(KXP::EqualBytes<'S', '3'>(KXP::LoadWideWord(bytes)) |
                        KXP::EqualBytes<'M', 0x0F, 0x10, 0x31, 0x0B, 0xF6>(KXP::LoadWideWord(bytes + 1)));
}

class TagScan {
  public:
    TagScan(ByteView block, SniffResult& result) : block_(block), result_(result) {}

    // Whether a tag names one of our makers.
    bool Run(size_t first) {
        for (size_t next = first; next <= kLastScanned && !IsDone();) {
            const size_t at = std::min(next, kBlockSize - 1 - kStep);  // the last step overlaps
            const std::array<KXP::Word, 2> marks = Beginnings(block_.text().data() + at);
            if ((marks[0] | marks[1]) != 0) {
                TestMarked(at, next, marks[0]);
                TestMarked(at + kStep / 2, next, marks[1]);
            }
            next = at + kStep;
        }
        return Matched();
    }

  private:
    static constexpr size_t kStep = sizeof(KXP::WideWord);

    // The marked positions of eight from `at` on, but for those before `next`.
    void TestMarked(size_t at, size_t next, KXP::Word marks) {
        for (; marks != 0 && !IsDone(); marks &= marks - 1) {
            const size_t place = at + KXP::FirstMark(marks);
            if (place >= next && place <= kLastScanned) Test(place);
        }
    }
    bool IsDone() const { return subTypeSeen_ && softwareSeen_ && Matched(); }

    void Test(size_t at) {
        if (tiffBase_ != 0) {
            TestTag(at);
        } else {
            if (!block_.HasAt(at, "MM")) return;
            tiffBase_ = at;
        }
        if (!subTypeSeen_) TestSubType(at);
    }

    bool Matched() const { return makeMatch_ || modelMatch_ || softwareMatch_; }

    Entry EntryAt(size_t at) const { return {block_.U32(at + 4), uint64_t{tiffBase_} + block_.U32(at + 8)}; }

    void TestTag(size_t at) {
        switch (block_.U16(at)) {
            case 0x010F:
                TestMake(EntryAt(at));
                break;
            case 0x0110:
                // A maker, once seen, outranks the model.
                if (!makeSeen_) TestModel(EntryAt(at));
                break;
            case 0x0131:
                if (!softwareSeen_) TestSoftware(EntryAt(at));
                break;
            case 0x000B:
                TakeName(EntryAt(at), drsNameSeen_, result_.drsName, "CheckIfZv: DRSName is way too big!");
                break;
            case 0xC6F6:
                TakeName(EntryAt(at), drsProfileNameSeen_, result_.drsProfileName,
                         "CheckIfZv: DRSProfileName is way too big!");
                break;
            default:
                break;
        }
    }

    // A count that fits no name keeps the verdict; one that does overwrites it.
    void TestMake(const Entry& entry) {
        makeSeen_ = true;
        if (entry.count == 9) makeMatch_ = block_.HasAt(entry.value, "ZvCamera");
        if (entry.count == 7) makeMatch_ = block_.HasAt(entry.value, "ZORVEX");
    }

    void TestModel(const Entry& entry) {
        if (entry.count == 6) modelMatch_ = block_.HasAt(entry.value, "Lumis");
        if (entry.count == 9) modelMatch_ = block_.HasAt(entry.value, "ZvCamera");
    }

    // The whole value, unlike in a PNG: the count includes the terminating NUL, so a version after the name
    // makes a difference.
    void TestSoftware(const Entry& entry) {
        softwareSeen_ = true;
        for (const Tag& tag : g_zvSourceTags) {
            if (entry.count != tag.key.size() + 1 || !block_.HasAt(entry.value, tag.key)) continue;
            result_.fileSource = tag.value;
            softwareMatch_ = true;
        }
    }

    void TakeName(const Entry& entry, bool& seen, std::string& name, const char* tooBig) {
        if (seen) return;
        seen = true;
        if (entry.count > kBlockSize)
            result_.findings.push_back(tooBig);
        else
            name = block_.Sub(entry.value, entry.count).text();
    }

    void TestSubType(size_t at) {
        // Nearly every position is settled by its first byte, and there are hundreds of them.
        const char first = block_.text()[at];
        if (first != 'S' && first != '3') return;
        for (const std::string_view subType : kSubTypes) {
            if (!block_.HasAt(at, subType)) continue;
            result_.fileSubType = subType;
            subTypeSeen_ = true;
            return;
        }
    }

    const ByteView block_;
    SniffResult& result_;
    size_t tiffBase_ = 0;
    bool makeSeen_ = false;
    bool makeMatch_ = false;
    bool modelMatch_ = false;
    bool softwareSeen_ = false;
    bool softwareMatch_ = false;
    bool drsNameSeen_ = false;
    bool drsProfileNameSeen_ = false;
    bool subTypeSeen_ = false;
};

// The byte of the next marker, or 0xD9 (end of image) where the chain is broken: by the end of the file or by
// a byte that belongs to no marker.
uint8_t NextMarker(ByteCursor& cursor) {
    constexpr uint8_t kNone = 0xD9;
    ByteView byte = cursor.Take(1);
    if (!byte.StartsWith("\xFF")) return kNone;
    while (byte.StartsWith("\xFF"))
        byte = cursor.Take(1);
    return byte.size() == 0 ? kNone : static_cast<uint8_t>(byte.text()[0]);
}

bool IsStartOfFrame(uint8_t marker) {
    // C4, C8 and CC lie in the range but define tables or are reserved.
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Precision and length, height, width, and the count of components, which must be there too.
std::optional<JpegFrame> ReadFrame(ByteCursor& cursor) {
    const ByteView frame = cursor.Take(8);
    if (frame.size() < 8) return {};
    return JpegFrame{frame.U16(5), frame.U16(3)};
}

}  // namespace

int32_t WalkJpeg(ByteCursor& cursor, SniffResult& result) {
    const ByteView block = cursor.Take(kBlockSize);
    if (block.size() < kBlockSize || !block.StartsWith("\xFF\xD8\xFF\xE0")) return kInspected;
    const uint16_t length = block.U16(4);
    if (!TagScan(block, result).Run(size_t{length} + 4)) return kInspected;

    result.isOwn = true;
    cursor.Rewind();
    if (!JpegSizeIsValid(cursor)) result.fileSubType = "SuperResolution_Oversized";
    return kInspected;
}

std::optional<JpegFrame> FindJpegFrame(ByteCursor& cursor) {
    if (!cursor.Take(2).StartsWith("\xFF\xD8")) return {};
    for (;;) {
        const uint8_t marker = NextMarker(cursor);
        if (IsStartOfFrame(marker)) return ReadFrame(cursor);
        if (marker == 0xD9 || marker == 0xDA) return {};
        const ByteView length = cursor.Take(2);
        if (length.U16(0) < 2) return {};
        cursor.Skip(length.U16(0) - 2u);
    }
}

bool JpegSizeIsValid(ByteCursor& cursor) {
    const std::optional<JpegFrame> frame = FindJpegFrame(cursor);
    return frame && uint64_t{frame->width} * frame->height <= kMaxPixels;
}

}  // namespace media
