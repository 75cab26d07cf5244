#include "importing/SourceKind.h"

#include "libraries/media-bytes/ByteView.h"
#include "plugin-modules/Gallery/src/media/PngChunks.h"

namespace importing {
namespace {

constexpr size_t kPacket = 188;
// With a time stamp ahead of each packet, as cameras record.
constexpr size_t kStampedPacket = 192;

bool IsTransportStream(media::ByteView start) {
    return (start.HasAt(0, "\x47") && start.HasAt(kPacket, "\x47")) ||
           (start.HasAt(4, "\x47") && start.HasAt(4 + kStampedPacket, "\x47"));
}

}  // namespace

SourceKind KindOf(std::string_view start) {
    const media::ByteView view(start);
    if (view.StartsWith(media::kPngSignature)) return SourceKind::kPng;
    if (view.StartsWith("\xFF\xD8\xFF")) return SourceKind::kJpeg;
    if (view.HasAt(4, "ftyp")) return view.HasAt(8, "qt  ") ? SourceKind::kOtherVideo : SourceKind::kMp4;
    const bool isQuickTime = view.HasAt(4, "moov") || view.HasAt(4, "wide") || view.HasAt(4, "mdat");
    if (isQuickTime || view.StartsWith("\x1A\x45\xDF\xA3") || view.StartsWith("FLV\x01") ||
        IsTransportStream(view))
        return SourceKind::kOtherVideo;
    return SourceKind::kUnknown;
}

std::string_view ExtensionOf(SourceKind kind) {
    switch (kind) {
        case SourceKind::kPng:
            return ".png";
        case SourceKind::kJpeg:
            return ".jpg";
        case SourceKind::kMp4:
        case SourceKind::kOtherVideo:
            return ".mp4";
        case SourceKind::kUnknown:
            break;
    }
    return "";
}

}  // namespace importing
