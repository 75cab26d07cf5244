// A video file opened by FFmpeg's demuxer over a descriptor and nothing else: no path, no protocol, and none
// of the other files that the input may name.
//
// Limits apply before anything is allocated for what the file claims: to streams, to the samples of its
// tables, to the bytes and packets read, and to time, which is checked at each read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/SampleTally.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

class MediaInput {
  public:
    static constexpr unsigned kMaxStreams = 32;
    // Enough for a head that describes SampleTally::kLimit samples.
    static constexpr uint64_t kMaxHeadBytes = 64u << 20;
    // No media has as many zero bytes in a row: after these the file ends, as in a hole of a sparse one.
    static constexpr uint64_t kMaxZeroBytes = 16u << 20;

    struct Limits {
        uint64_t bytes;
        uint64_t packets;
    };

    // A file that this library has written is read by its tables alone, as they are: without a limit on
    // samples, nor what edit lists and chapters make of them.
    enum class Trust { Nothing, OwnTables };

    // Reads the head. Throws Failure; nothing is kept of the descriptor but its number.
    MediaInput(int fd, const Budget& budget, Limits limits, Trust trust = Trust::Nothing,
               const char* (*demuxerOf)(std::string_view) = DemuxerOf);
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    AVFormatContext& format() const { return *format_; }
    // The same file, for readers of its boxes.
    SourceFile& file() { return file_; }
    const SourceFile& file() const { return file_; }

    // The first video stream that is no cover picture; null without one.
    AVStream* Video();

    // What Probe may read, of the file and of its time.
    struct Probed {
        int64_t bytes;
        int64_t microseconds;
    };
    static constexpr Probed kBriefly{1 << 20, 1000000};

    // Reads frames to learn about the streams what the container does not say. Costly.
    void Probe(Probed most = kBriefly);

    // The next packet; false at the end of the file.
    bool Read(AVPacket& packet);

    // Moves to the last keyframe of the stream at or before the time; false when there is none.
    bool SeekBack(const AVStream& stream, int64_t time);

    // Throws the Failure that the result of a call of FFmpeg means, unless the call succeeded.
    void Expect(int result, const char* doing) const;

  private:
    static int ReadBytes(void* self, uint8_t* buffer, int size) noexcept;
    static int64_t SeekBytes(void* self, int64_t offset, int whence) noexcept;

    int ReadSome(uint8_t* buffer, int size) noexcept;
    // The status that ends all reading, OVNX_MEDIA_OK while none does.
    OvnxMediaStatus Allowed() const noexcept;
    bool HasTooManySamples() const noexcept;
    bool IsInHole(const uint8_t* bytes, size_t size) noexcept;
    void Open(const char* demuxer);

    SourceFile file_;
    const Budget& budget_;
    const Trust trust_;
    Limits limits_;  // and no more bytes than the file has, apart from those read twice
    int64_t position_ = 0;
    uint64_t bytesRead_ = 0;
    uint64_t packetsRead_ = 0;
    uint64_t zeros_ = 0;  // at the end of what was read
    bool inHead_ = true;
    OvnxMediaStatus failure_ = OVNX_MEDIA_OK;
    SampleTally tally_;
    IoOwner io_;
    InputOwner format_;
};

}  // namespace ovnxmedia
