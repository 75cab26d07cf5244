#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <new>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/cut/Remux.h"

namespace {

// Long videos on slow disks take their time; this ends what would go on for ever.
constexpr std::chrono::hours kLimit{1};

int32_t Fail(const OvnxMediaRemuxRequest& request, int32_t status, const char* text) {
    if (request.message && request.messageSize > 0) {
        const size_t size = std::min(std::strlen(text), request.messageSize - 1);
        std::memcpy(request.message, text, size);
        request.message[size] = '\0';
    }
    return status;
}

}  // namespace

extern "C" int32_t OvnxMediaRemux(int input, int output, const OvnxMediaRemuxRequest* request) {
    try {
        const bool atKeyframe = (request->flags & OVNX_MEDIA_REMUX_AT_KEYFRAME) != 0;
        const uint32_t leftOut = ovnxmedia::Remux(input, output, {request->start, request->end, atKeyframe},
                                                  ovnxmedia::Budget(kLimit));
        if (request->leftOut) *request->leftOut = leftOut;
        return OVNX_MEDIA_OK;
    } catch (const ovnxmedia::Failure& failure) {
        return Fail(*request, failure.status(), failure.what());
    } catch (const std::bad_alloc&) {
        return Fail(*request, OVNX_MEDIA_NO_MEMORY, "out of memory");
    } catch (const std::exception& error) {
        return Fail(*request, OVNX_MEDIA_DAMAGED, error.what());
    }
}
