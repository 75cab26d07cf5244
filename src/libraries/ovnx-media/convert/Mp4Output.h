// An MP4 file that is written from packets by FFmpeg's muxer.
#pragma once

#include <cstdint>
#include <memory>

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

class Mp4Output {
  public:
    // `fd` is an empty file, open for writing. All functions throw Failure.
    explicit Mp4Output(int fd);

    // A track like one of a source.
    AVStream& AddTrack(const AVStream& source);
    // What describes the whole recording, with its chapters moved by so many microseconds.
    void Describe(const AVFormatContext& source, int64_t shift);
    // Once, after the tracks and before the packets. Units of the tracks' times may change.
    void Start();
    // Takes what the packet refers to.
    void Write(AVPacket& packet);
    // Once; the file is then complete.
    void Finish();

  private:
    static int WriteBytes(void* self, uint8_t* bytes, int size) noexcept;
    static int64_t SeekBytes(void* self, int64_t offset, int whence) noexcept;
    void Expect(int result, const char* doing) const;

    struct Freed {
        void operator()(AVFormatContext* format) const { avformat_free_context(format); }
    };

    const int fd_;
    int64_t position_ = 0;
    int64_t size_ = 0;
    int error_ = 0;  // errno of a write that failed
    IoOwner io_;
    std::unique_ptr<AVFormatContext, Freed> format_;
};

}  // namespace ovnxmedia
