#include "plugin-modules/Gallery/src/thumbnails/DrawnPicture.h"

#include <array>
#include <memory>

namespace {

int IsCancelled(void* context) {
    return *static_cast<const std::atomic<bool>*>(context) ? 1 : 0;
}

}  // namespace

DrawnPicture DrawInBox(const ovnxmedia::MediaLibrary& media, uint32_t width, uint32_t height,
                       const std::atomic<bool>& cancelled, std::string& error, const Draw& draw) {
    std::array<char, 256> message{};
    OvnxMediaRequest request{};
    request.width = width;
    request.height = height;
    request.stop = &IsCancelled;
    request.context = const_cast<std::atomic<bool>*>(&cancelled);
    request.message = message.data();
    request.messageSize = message.size();
    OvnxMediaPicture picture{};
    if (draw(&request, &picture) != OVNX_MEDIA_OK) {
        error = message.data();
        return {};
    }
    const std::unique_ptr<OvnxMediaPicture, decltype(media.release)> owner(&picture, media.release);
    return {{reinterpret_cast<const char*>(picture.bytes), picture.size}, picture.width, picture.height};
}
