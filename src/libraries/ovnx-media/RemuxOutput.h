// Writes the clip: an MP4 file with room for its "moov" before the frames.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "libraries/ovnx-media/Ffmpeg.h"
#include "libraries/ovnx-media/GatheredWriter.h"

namespace ovnxmedia {

class RemuxOutput {
  public:
    // `fd` is an empty file, open for reading and writing, and stays the caller's. All members throw Failure,
    // with OVNX_MEDIA_UNWRITABLE when the file cannot be written.
    explicit RemuxOutput(int fd);
    RemuxOutput(const RemuxOutput&) = delete;
    RemuxOutput& operator=(const RemuxOutput&) = delete;

    // Adds a track with the same description.
    AVStream& AddTrack(const AVStream& like);

    // Begins the file, after the last AddTrack. `room` is the most that the "moov" may take, `source` the
    // movie that the tracks come from.
    void Begin(const AVFormatContext& source, uint64_t room);

    // Times in the units of the track's stream.
    void Write(AVPacket& packet);

    // Ends the file, with durations and user data as in FinishMovie, which takes part of the room.
    void Finish(const std::vector<uint64_t>& durations, std::string_view userData);

    // Units of the movie in a second.
    static constexpr int kMovieTimescale = 90000;

  private:
    static int WriteBytes(void* self, uint8_t* bytes, int size) noexcept;
    static int64_t SeekBytes(void* self, int64_t offset, int whence) noexcept;

    // Throws where a call of FFmpeg has failed.
    void Expect(int result, const char* doing) const;
    void PutMovie(const std::vector<uint64_t>& durations, std::string_view userData);

    const int fd_;
    GatheredWriter writer_{fd_};
    const AVBufferRef* written_ = nullptr;  // what keeps the bytes of the packet that is being written
    int64_t position_ = 0;
    int error_ = 0;  // of the system, by which all writing ends
    IoOwner io_;
    std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> format_;
};

}  // namespace ovnxmedia
