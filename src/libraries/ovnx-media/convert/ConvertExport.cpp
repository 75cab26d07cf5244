#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/CodecMemory.h"
#include "libraries/ovnx-media/Failure.h"
#include "libraries/ovnx-media/convert/Convert.h"

namespace {

// Long recordings on slow disks take their time; this ends what would go on for ever.
constexpr std::chrono::hours kLimit{6};

int32_t Fail(const OvnxMediaPacketListener& listener, int32_t status, const char* text) {
    if (listener.message && listener.messageSize > 0) {
        const size_t size = std::min(std::strlen(text), listener.messageSize - 1);
        std::memcpy(listener.message, text, size);
        listener.message[size] = '\0';
    }
    return status;
}

int IsStopped(void* context) {
    const auto& listener = *static_cast<const OvnxMediaPacketListener*>(context);
    return listener.read ? listener.read(listener.context, 0) : 0;
}

template <typename Work>
int32_t Run(const OvnxMediaPacketListener& listener, const Work& work) {
    try {
        const ovnxmedia::CodecMemoryUse use(ovnxmedia::CodecMemoryUse::kForPackets);
        ovnxmedia::PacketListener to;
        if (listener.packet)
            to.onPacket = [&](uint32_t track, std::string_view bytes, void* owner) {
                return listener.packet(listener.context, track, bytes.data(), bytes.size(), owner) != 0;
            };
        if (listener.restart) to.onRestart = [&] { listener.restart(listener.context); };
        to.onRead = [&](uint64_t bytes) {
            if (listener.read && listener.read(listener.context, bytes) != 0)
                throw ovnxmedia::Failure(OVNX_MEDIA_STOPPED, "stopped");
        };
        auto* const context = const_cast<OvnxMediaPacketListener*>(&listener);
        work(to, ovnxmedia::Budget(kLimit, IsStopped, context));
        return OVNX_MEDIA_OK;
    } catch (const ovnxmedia::Failure& failure) {
        return Fail(listener, failure.status(), failure.what());
    } catch (const std::bad_alloc&) {
        return Fail(listener, OVNX_MEDIA_NO_MEMORY, "out of memory");
    } catch (const std::exception& error) {
        return Fail(listener, OVNX_MEDIA_DAMAGED, error.what());
    }
}

}  // namespace

extern "C" {

int32_t OvnxMediaConvert(int input, int output, const OvnxMediaPacketListener* listener) {
    return Run(*listener, [&](const ovnxmedia::PacketListener& to, const ovnxmedia::Budget& budget) {
        ovnxmedia::Convert(input, output, to, budget);
    });
}

int32_t OvnxMediaPackets(int fd, const OvnxMediaPacketListener* listener) {
    return Run(*listener, [&](const ovnxmedia::PacketListener& to, const ovnxmedia::Budget& budget) {
        ovnxmedia::ReadPackets(fd, to, budget);
    });
}

void OvnxMediaReleasePacket(void* owner) {
    ovnxmedia::ReleasePacket(owner);
}
}
