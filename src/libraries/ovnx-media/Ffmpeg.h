// FFmpeg's headers, owners for what it allocates, and what it keeps for the whole process.
#pragma once

#include <cstring>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace ovnxmedia {

// Deletes by one of the functions that take the address of the pointer.
template <auto Free>
struct FreedBy {
    template <typename T>
    void operator()(T* object) const {
        Free(&object);
    }
};

using PacketOwner = std::unique_ptr<AVPacket, FreedBy<av_packet_free>>;
using BufferOwner = std::unique_ptr<AVBufferRef, FreedBy<av_buffer_unref>>;
using FrameOwner = std::unique_ptr<AVFrame, FreedBy<av_frame_free>>;
using CodecOwner = std::unique_ptr<AVCodecContext, FreedBy<avcodec_free_context>>;
using InputOwner = std::unique_ptr<AVFormatContext, FreedBy<avformat_close_input>>;

// Frees the buffer too, which FFmpeg leaves to whoever made the context.
struct IoFreed {
    void operator()(AVIOContext* io) const;
};
using IoOwner = std::unique_ptr<AVIOContext, IoFreed>;

// The number in a member that FFmpeg declares as an enumeration and fills from the file, with whatever the
// file says. It must not be loaded as the enumeration before it is known to be one of its values.
template <typename Enumeration>
int NumberOf(const Enumeration& member) {
    static_assert(sizeof(member) == sizeof(int));
    int number = 0;
    std::memcpy(&number, &member, sizeof(number));
    return number;
}

// All throw std::bad_alloc.
PacketOwner MakePacket();
FrameOwner MakeFrame();
IoOwner MakeIo(bool writes, void* opaque, int (*read)(void*, uint8_t*, int),
               int (*write)(void*, uint8_t*, int), int64_t (*seek)(void*, int64_t, int));

// To be called before anything else of FFmpeg: silences its log, which would go to the client's standard
// error, and limits each of its allocations to OVNX_MEDIA_MAX_ALLOCATION. Does so once.
void PrepareFfmpeg();

}  // namespace ovnxmedia
