// An MP4 file of the first packets of a recording, by FFmpeg's muxer and in memory: how it describes tracks
// and codecs. Of a whole recording it would keep each packet's entry until the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "libraries/ovnx-media/Ffmpeg.h"

namespace ovnxmedia {

class Mp4Template {
  public:
    // All functions throw Failure.
    Mp4Template();

    // A track like one of a source.
    AVStream& AddTrack(const AVStream& source);
    // What describes the whole recording, with its chapters moved by so many microseconds.
    void Describe(const AVFormatContext& source, int64_t shift);
    // Once, after the tracks and before the packets. Units of the tracks' times may change.
    void Start();
    // Takes what the packet refers to.
    void Write(AVPacket& packet);
    // Once. Returns the file.
    std::string Finish();

  private:
    static int WriteBytes(void* self, uint8_t* bytes, int size) noexcept;
    static int64_t SeekBytes(void* self, int64_t offset, int whence) noexcept;

    struct Freed {
        void operator()(AVFormatContext* format) const { avformat_free_context(format); }
    };

    std::string bytes_;
    size_t position_ = 0;
    IoOwner io_;
    std::unique_ptr<AVFormatContext, Freed> format_;
};

}  // namespace ovnxmedia
