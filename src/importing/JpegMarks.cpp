#include "importing/JpegMarks.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "importing/ExifData.h"
#include "importing/JpegSegments.h"
#include "plugin-modules/Gallery/src/media/JpegWalk.h"

namespace importing {
namespace {

using namespace std::string_view_literals;

constexpr auto kExifStart = "Exif\0\0"sv;
constexpr uint8_t kApp0 = 0xE0;
constexpr uint8_t kApp1 = 0xE1;
// Readers look at no more of a file.
constexpr size_t kBlock = 512;
// With a small picture within, it would take the place of the tags.
constexpr uint64_t kMostJfif = 32;

std::string SegmentOf(uint8_t marker, std::string_view payload) {
    const size_t length = payload.size() + 2;
    return std::string{'\xFF', static_cast<char>(marker), static_cast<char>(length >> 8),
                       static_cast<char>(length & 0xFF)} +
           std::string(payload);
}

std::string Read(media::ByteSource& source, uint64_t from, uint64_t size) {
    std::string bytes(static_cast<size_t>(size), '\0');
    if (source.ReadAt(from, bytes.data(), bytes.size()) < bytes.size()) throw ImportError("cannot be read");
    return bytes;
}

ExifEntry Text(uint16_t tag, std::string text) {
    return {tag, exif::kText, static_cast<uint32_t>(text.size()), std::move(text)};
}

bool IsRecognized(const std::string& start, const CaptureMarks& marks, bool withGame) {
    media::SniffResult result;
    std::string block = start;
    block.resize(std::max(block.size(), kBlock));
    media::MemorySource source(block);
    media::ByteCursor cursor(source);
    media::WalkJpeg(cursor, result);
    return result.isOwn && result.fileSource == (marks.highlight.empty() ? "OVS_Share" : "OVS_SDK") &&
           (!withGame || result.drsName == marks.game);
}

// The segment of the Exif data. Readers take no file for a picture that is shorter than a block.
std::string ExifSegment(const std::string& tiff, std::string_view padding, uint64_t others) {
    std::string segment = SegmentOf(kApp1, std::string(kExifStart).append(tiff).append(padding));
    if (segment.size() + others >= kBlock) return segment;
    const auto missing = static_cast<size_t>(kBlock - segment.size() - others);
    return SegmentOf(kApp1, std::string(kExifStart).append(tiff).append(missing, '\0'));
}

// The start of the file up to the end of the Exif segment, which `rest` bytes follow. Readers scan the bytes
// for tags without their places, so that a number may look like one; then another form of the same is tried.
std::string MarkedStart(const std::string& app0, ExifData data, const CaptureMarks& marks, uint64_t rest) {
    const std::string beginning = "\xFF\xD8" + app0;
    // With its terminating zero: readers compare the count.
    data.image.Put(Text(exif::kSoftware, SoftwareOf(marks) + '\0'));
    data.image.Remove(exif::kDrsName);
    const ExifData withoutGame = data;
    data.image.Put(Text(exif::kDrsName, marks.game));
    for (const bool withGame : {true, false}) {
        ExifData form = withGame ? data : withoutGame;
        for (const bool withSubfile : {false, true}) {
            if (withSubfile) form.image.Put({exif::kSubfile, exif::kLong, 1, std::string(4, '\0')});
            for (const std::string_view padding : {""sv, "\0\0"sv}) {
                std::string start =
                    beginning + ExifSegment(WriteExif(form), padding, beginning.size() + rest);
                if (IsRecognized(start, marks, withGame)) return start;
            }
        }
    }
    throw ImportError("leaves no room for the tags of a capture");
}

}  // namespace

Splice MarkJpeg(media::ByteSource& source, uint64_t size, const CaptureMarks& marks) {
    const JpegSegments found = ReadJpegSegments(source, size);
    const JpegSegment& first = found.segments.front();
    const bool keepsFirst = first.marker == kApp0 && first.payloadSize() <= kMostJfif;
    // A segment of our own where there is none: one of JFIF would change the colours of some pictures.
    const std::string app0 = keepsFirst ? SegmentOf(kApp0, Read(source, first.payload, first.payloadSize()))
                                        : SegmentOf(kApp0, "ZORVEX\0"sv);
    ExifData data;
    const JpegSegment* exif = nullptr;
    for (const JpegSegment& segment : found.segments) {
        if (segment.marker != kApp1 || exif) continue;
        const std::string payload = Read(source, segment.payload, segment.payloadSize());
        const media::ByteView view(payload);
        if (!view.StartsWith(kExifStart)) continue;
        exif = &segment;
        const std::optional<ExifData> own = ReadExif(view.Sub(kExifStart.size()));
        if (!own) throw ImportError("has Exif data that are damaged");
        data = *own;
    }
    const auto isReplaced = [&](const JpegSegment& segment) {
        return &segment == exif || (keepsFirst && &segment == &first);
    };
    uint64_t rest = size - found.segments.back().to;
    for (const JpegSegment& segment : found.segments)
        if (!isReplaced(segment)) rest += segment.to - segment.from;
    Splice splice;
    splice.Add(MarkedStart(app0, std::move(data), marks, rest));
    for (const JpegSegment& segment : found.segments)
        if (!isReplaced(segment)) splice.Copy(segment.from, segment.to, !segment.IsMetadata());
    const uint64_t last = found.segments.back().to;
    splice.Copy(last, found.end, true);
    splice.Copy(found.end, size, false);
    return splice;
}

}  // namespace importing
