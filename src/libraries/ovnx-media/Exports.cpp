#include <algorithm>
#include <cstdio>
#include <new>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/CodecMemory.h"
#include "libraries/ovnx-media/FileKind.h"
#include "libraries/ovnx-media/PngWriter.h"
#include "libraries/ovnx-media/SharedThumbnail.h"
#include "libraries/ovnx-media/Still.h"
#include "libraries/ovnx-media/VideoFrame.h"

namespace {

using namespace ovnxmedia;

// No side of a thumbnail needs to be longer, whatever is asked for.
constexpr uint32_t kMaxSide = 65535;
// The file in memory, which has room to grow.
constexpr uint64_t kMaxFileBytes = OVNX_MEDIA_MAX_ALLOCATION / 4;

// The texts of decoders may quote the file, whose bytes must not make other lines of them.
void Tell(const OvnxMediaRequest& request, const char* text) {
    if (!request.message || request.messageSize == 0) return;
    std::snprintf(request.message, request.messageSize, "%s", text);
    for (char* at = request.message; *at; ++at) {
        if (*at < ' ' || *at > '~') *at = '?';
    }
}

// No exception leaves the library.
template <typename Work>
int32_t StatusOf(const OvnxMediaRequest& request, Work work) noexcept {
    try {
        work();
        return OVNX_MEDIA_OK;
    } catch (const Failure& failure) {
        Tell(request, failure.what());
        return failure.status();
    } catch (const std::bad_alloc&) {
        Tell(request, "out of memory");
        return OVNX_MEDIA_NO_MEMORY;
    } catch (const std::exception& error) {
        Tell(request, error.what());
        return OVNX_MEDIA_DAMAGED;
    } catch (...) {
        Tell(request, "an unknown failure");
        return OVNX_MEDIA_DAMAGED;
    }
}

void GiveAsPng(const Picture& picture, OvnxMediaPicture& given) {
    FileBytes file = WritePng(picture, kMaxFileBytes);
    given = {file.bytes.release(), file.size, picture.size.width, picture.size.height};
}

template <typename Decode>
int32_t MakePicture(int fd, const OvnxMediaRequest& request, OvnxMediaPicture& picture, Decode decode) {
    return StatusOf(request, [&] {
        const CodecMemoryUse use(CodecMemoryUse::kForPictures);
        const Size box{std::clamp(request.width, 1U, kMaxSide), std::clamp(request.height, 1U, kMaxSide)};
        GiveAsPng(decode(fd, box, Budget(Budget::kLimit, request.stop, request.context)), picture);
    });
}

}  // namespace

extern "C" {

int32_t OvnxMediaProbe(int fd) {
    int32_t kind = OVNX_MEDIA_KIND_UNKNOWN;
    const int32_t status = StatusOf({}, [&] {
        SourceFile file(fd);
        kind = ProbeKind(file);
    });
    return status == OVNX_MEDIA_OK ? kind : status;
}

int32_t OvnxMediaStillThumbnail(int fd, const OvnxMediaRequest* request, OvnxMediaPicture* picture) {
    return MakePicture(fd, *request, *picture, DecodeStill);
}

int32_t OvnxMediaVideoFrame(int fd, const OvnxMediaRequest* request, OvnxMediaPicture* picture) {
    return MakePicture(fd, *request, *picture, DecodeVideoFrame);
}

int32_t OvnxMediaSharedThumbnail(int fd, const OvnxMediaOrigin* origin, const OvnxMediaRequest* request,
                                 OvnxMediaPicture* picture) {
    return MakePicture(fd, *request, *picture, [origin](int file, Size box, const Budget& budget) {
        return DecodeShared(file, *origin, box, budget);
    });
}

int32_t OvnxMediaSharedName(const char* uri, char name[OVNX_MEDIA_SHARED_NAME_SIZE]) {
    return StatusOf({},
                    [&] { std::snprintf(name, OVNX_MEDIA_SHARED_NAME_SIZE, "%s", SharedName(uri).c_str()); });
}

void OvnxMediaRelease(OvnxMediaPicture* picture) {
    KXP::FreeInSlab(picture->bytes);
    *picture = {};
}
}
