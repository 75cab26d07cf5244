#include "libraries/ovnx-media/FileKind.h"

#include "libraries/ovnx-media/Failure.h"

namespace ovnxmedia {
namespace {

// Of an MPEG transport stream, also with a time stamp ahead of each packet.
constexpr size_t kPacket = 188;
constexpr size_t kStamp = 4;

struct Magic {
    std::string_view bytes;
    StillFormat format;
};

constexpr Magic kMagics[] = {
    {"\x89PNG\r\n\x1A\n", StillFormat::Png},
    {"\xFF\xD8\xFF", StillFormat::Jpeg},
    {"\x76\x2F\x31\x01", StillFormat::Exr},
};

}  // namespace

const char* DemuxerOf(std::string_view start) {
    if (start.substr(0, 4) == "\x1A\x45\xDF\xA3") return "matroska";
    // The first boxes of this family; files older than "ftyp" begin with one of the others.
    for (const char* type : {"ftyp", "moov", "mdat", "wide", "free", "skip"})
        if (start.size() >= kStartSize && start.substr(4, 4) == type) return "mov";
    return nullptr;
}

const char* AnyDemuxerOf(std::string_view start) {
    if (const char* const known = DemuxerOf(start)) return known;
    if (start.substr(0, 4) == "FLV\x01") return "flv";
    if (start.size() < kLongStartSize) return nullptr;
    const bool isPlain = start[0] == 'G' && start[kPacket] == 'G';
    const bool isStamped = start[kStamp] == 'G' && start[2 * kStamp + kPacket] == 'G';
    return isPlain || isStamped ? "mpegts" : nullptr;
}

StillFormat StillFormatOf(std::string_view start) {
    for (const Magic& magic : kMagics)
        if (start.substr(0, magic.bytes.size()) == magic.bytes) return magic.format;
    return StillFormat::None;
}

std::string StartOf(SourceFile& file) {
    char start[kStartSize];
    const size_t size = file.ReadAt(0, start, sizeof(start));
    if (file.HasFailed()) throw Failure(OVNX_MEDIA_UNREADABLE, "cannot be read");
    return {start, size};
}

OvnxMediaKind ProbeKind(SourceFile& file) {
    const std::string start = StartOf(file);
    if (StillFormatOf(start) != StillFormat::None) return OVNX_MEDIA_KIND_STILL;
    return DemuxerOf(start) ? OVNX_MEDIA_KIND_VIDEO : OVNX_MEDIA_KIND_UNKNOWN;
}

}  // namespace ovnxmedia
