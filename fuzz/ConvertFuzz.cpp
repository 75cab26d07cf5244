// A recording of any container becomes an MP4 or is refused, and what is heard of the packets while it is
// converted is what is heard of the MP4.
#include <algorithm>
#include <chrono>
#include <map>
#include <string>

#include "fuzz/MemoryFile.h"
#include "fuzz/Plain.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/convert/Convert.h"

namespace {

struct Heard {
    std::map<uint32_t, std::string> tracks;

    ovnxmedia::PacketListener Listener() {
        ovnxmedia::PacketListener listener;
        listener.onPacket = [this](uint32_t track, std::string_view bytes, void*) {
            tracks[track] += bytes;
            return false;
        };
        listener.onRestart = [this] { tracks.clear(); };
        return listener;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    static MemoryFile copy;
    file.Set(data, size);
    copy.Set(data, 0);
    const ovnxmedia::Budget budget(std::chrono::seconds(5));
    Heard source;
    try {
        ovnxmedia::Convert(file.fd(), copy.fd(), source.Listener(), budget);
    } catch (const ovnxmedia::Failure&) {
        return 0;
    }
    Heard written;
    ovnxmedia::ReadPackets(copy.fd(), written.Listener(), budget);
    // Of a movie the cutter may leave out what no edit shows.
    const std::string_view start(reinterpret_cast<const char*>(data), std::min(size, ovnxmedia::kStartSize));
    const char* const demuxer = ovnxmedia::DemuxerOf(start);
    const bool isMovie = demuxer && std::string_view(demuxer) == "mov";
    plain::Demand(isMovie || written.tracks == source.tracks);
    return 0;
}
