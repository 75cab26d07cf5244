// A video file opened by FFmpeg's demuxer over a descriptor, and nothing but that descriptor: no path, no
// protocol and no other file that the input may name.
//
// Limits hold before anything is allocated for what the file claims: streams, the samples of its tables, the
// bytes read and the packets taken, and time, which is asked at each read.
#pragma once

#include <cstdint>
#include <string>

#include "libraries/ovnx-media/Budget.h"
#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/SampleTally.h"

namespace ovnxmedia {

// The name of the demuxer for a file of these first bytes, null when there is none.
const char* DemuxerOf(const uint8_t* bytes, size_t size);

class MediaInput {
  public:
    static constexpr unsigned kMaxStreams = 32;
    // What a head may have that describes SampleTally::kLimit samples.
    static constexpr uint64_t kMaxHeadBytes = 64u << 20;

    struct Limits {
        uint64_t bytes;
        uint64_t packets;
    };

    // Reads the head. Throws Failure; nothing is kept of the descriptor but its number.
    MediaInput(int fd, const Budget& budget, Limits limits);
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    AVFormatContext& format() const { return *format_; }
    // Of the whole file, in bytes.
    uint64_t size() const { return static_cast<uint64_t>(size_); }

    // The first video stream that is no cover picture; null without one.
    AVStream* Video();

    // Reads frames where the container does not tell what streams are. Costly, so only for those who must
    // know.
    void Probe();

    // The next packet; false at the end of the file.
    bool Read(AVPacket& packet);

    // Moves to the last keyframe of the stream at or before the time; false when no way leads there.
    bool SeekBack(const AVStream& stream, int64_t time);

    // Throws what the result of a call of FFmpeg stands for, unless it is a good one.
    void Expect(int result, const char* doing) const;

  private:
    static int ReadBytes(void* self, uint8_t* buffer, int size) noexcept;
    static int64_t SeekBytes(void* self, int64_t offset, int whence) noexcept;

    int ReadSome(uint8_t* buffer, int size) noexcept;
    // The status that ends all reading, OVNX_MEDIA_OK while none does.
    OvnxMediaStatus Allowed() const noexcept;
    bool HasTooManySamples() const noexcept;
    void Open(const char* demuxer);

    const int fd_;
    const Budget& budget_;
    Limits limits_;  // and no more bytes than the file has, but for what is read twice
    int64_t size_ = 0;
    int64_t position_ = 0;
    uint64_t bytesRead_ = 0;
    uint64_t packetsRead_ = 0;
    bool inHead_ = true;
    OvnxMediaStatus failure_ = OVNX_MEDIA_OK;
    SampleTally tally_;
    IoOwner io_;
    InputOwner format_;
};

}  // namespace ovnxmedia
