#include "libraries/ovnx-media/convert/PlainPacket.h"

#include <string_view>

#include "libraries/media-bytes/ByteView.h"
#include "libraries/ovnx-media/cut/MemoryBoxes.h"

namespace ovnxmedia {
namespace {

using namespace std::string_view_literals;

constexpr auto kStartCode = "\0\0\1"sv;
constexpr size_t kAdtsHeader = 7;
constexpr size_t kAdtsSum = 2;

// Where the next start code begins, whose first of four bytes may be a zero more.
size_t StartCodeIn(std::string_view bytes, size_t from) {
    const size_t found = bytes.find(kStartCode, from);
    if (found == std::string_view::npos) return bytes.size();
    return found > from && bytes[found - 1] == '\0' ? found - 1 : found;
}

void AppendUnits(std::string_view bytes, std::string& out) {
    for (size_t at = StartCodeIn(bytes, 0); at < bytes.size();) {
        at = bytes.find(kStartCode, at) + kStartCode.size();
        const size_t end = StartCodeIn(bytes, at);
        AppendNumber(out, 4, end - at);
        out += bytes.substr(at, end - at);
        at = end;
    }
}

size_t AdtsHeaderOf(std::string_view bytes) {
    const media::ByteView header(bytes);
    if (bytes.size() < kAdtsHeader || (header.U16(0) & 0xFFF0) != 0xFFF0) return 0;
    const bool hasSum = (header.U16(0) & 1) == 0;
    return kAdtsHeader + (hasSum ? kAdtsSum : 0);
}

}  // namespace

Framing FramingOf(const AVCodecParameters& track, bool isTransportStream) {
    const int codec = NumberOf(track.codec_id);
    if (codec == AV_CODEC_ID_AAC && isTransportStream) return Framing::Adts;
    if (codec != AV_CODEC_ID_H264 && codec != AV_CODEC_ID_HEVC) return Framing::None;
    // The records of an MP4 begin with their version; start codes, with zeros.
    const bool hasStartCodes = track.extradata_size > 4 && track.extradata[0] == 0 && track.extradata[1] == 0;
    return hasStartCodes ? Framing::StartCodes : Framing::None;
}

std::string_view PlainBytes(Framing framing, const AVPacket& packet, std::string& room) {
    const std::string_view bytes(reinterpret_cast<const char*>(packet.data),
                                 static_cast<size_t>(packet.size));
    if (framing != Framing::StartCodes)
        return bytes.substr(framing == Framing::Adts ? AdtsHeaderOf(bytes) : 0);
    room.clear();
    AppendUnits(bytes, room);
    return room;
}

}  // namespace ovnxmedia
