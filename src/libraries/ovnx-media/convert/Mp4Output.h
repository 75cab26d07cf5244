// An MP4 file that is written from packets: their bytes as they come, in chunks of each track, then the
// tables.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/convert/Mp4Template.h"
#include "libraries/ovnx-media/convert/TrackTables.h"

namespace ovnxmedia {

class Mp4Output {
  public:
    // `fd` is an empty file, open for writing. All functions throw Failure.
    explicit Mp4Output(int fd);

    // Those of the template.
    AVStream& AddTrack(const AVStream& source);
    void Describe(const AVFormatContext& source, int64_t shift) { template_.Describe(source, shift); }
    void Start() { template_.Start(); }

    // `plain` is what the file has of the packet.
    void Write(const AVPacket& packet, std::string_view plain);
    // Once; the file is then complete.
    void Finish(const Budget& budget);

  private:
    struct Track {
        AVStream* stream = nullptr;
        TrackTables tables;
        std::string chunk;  // is written when it is large or long enough
        uint32_t chunkSamples = 0;
        int64_t chunkStart = 0;
        PacketOwner held;        // the last one for the template
        uint32_t described = 0;  // packets that the template has, or will have
        uint64_t describedBytes = 0;
    };

    void DescribeBy(Track& track, const AVPacket& packet, size_t size);
    // With `last` after what is waiting.
    void FlushChunk(Track& track, std::string_view last = {});
    void WriteAt(uint64_t position, std::string_view bytes) const;
    void Append(std::string_view bytes);
    void FlushEnd();
    std::string FinishTemplate();
    void WriteChapters(std::string_view file, std::string_view movie, const Budget& budget);

    const int fd_;
    Mp4Template template_;
    std::deque<Track> tracks_;  // those of chapters, which the muxer makes, at the end
    uint64_t written_ = 0;
    std::string end_;  // follows it
};

}  // namespace ovnxmedia
