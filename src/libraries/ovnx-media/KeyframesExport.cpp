#include <algorithm>
#include <exception>
#include <new>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/Keyframes.h"

extern "C" int32_t OvnxMediaKeyframes(int fd, OvnxMediaKeyframeList* list) {
    try {
        using ovnxmedia::Budget;
        const ovnxmedia::KeyframeTimes keyframes =
            ovnxmedia::ReadKeyframes(fd, list->capacity, Budget(Budget::kLimit, list->stop, list->context));
        std::copy(keyframes.times.begin(), keyframes.times.end(), list->times);
        list->count = keyframes.times.size();
        list->frame = keyframes.frame;
        return OVNX_MEDIA_OK;
    } catch (const ovnxmedia::Failure& failure) {
        return failure.status();
    } catch (const std::bad_alloc&) {
        return OVNX_MEDIA_NO_MEMORY;
    } catch (const std::exception&) {
        return OVNX_MEDIA_DAMAGED;
    }
}
