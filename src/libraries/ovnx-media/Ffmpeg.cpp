#include "libraries/ovnx-media/Ffmpeg.h"

#include <new>

#include "OvnxMedia.h"

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace ovnxmedia {
namespace {

void DropLine(void*, int, const char*, va_list) {}

template <typename Owner, typename T>
Owner Owned(T* object) {
    if (!object) throw std::bad_alloc();
    return Owner(object);
}

}  // namespace

PacketOwner MakePacket() {
    return Owned<PacketOwner>(av_packet_alloc());
}

FrameOwner MakeFrame() {
    return Owned<FrameOwner>(av_frame_alloc());
}

void IoFreed::operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
}

IoOwner MakeIo(bool writes, void* opaque, int (*read)(void*, uint8_t*, int),
               int (*write)(void*, uint8_t*, int), int64_t (*seek)(void*, int64_t, int)) {
    // A reader jumps about and may need little of each piece; a writer goes from the first byte to the last.
    const int size = writes ? 1 << 18 : 1 << 15;
    auto* buffer = static_cast<unsigned char*>(av_malloc(static_cast<size_t>(size)));
    if (!buffer) throw std::bad_alloc();
    IoOwner io(avio_alloc_context(buffer, size, writes ? 1 : 0, opaque, read, write, seek));
    if (io) return io;
    av_free(buffer);
    throw std::bad_alloc();
}

void PrepareFfmpeg() {
    static const bool done = [] {
        av_log_set_callback(DropLine);
        av_max_alloc(OVNX_MEDIA_MAX_ALLOCATION);
        return true;
    }();
    static_cast<void>(done);
}

}  // namespace ovnxmedia
