// The route /keyframes: where a video can be cut without being encoded again.
#pragma once

#include <memory>
#include <string>

#include "gallery-host/page/GalleryFolder.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/HttpMessage.h"
#include "libraries/ovnx-media/client/MediaLibrary.h"

namespace host::page {

class KeyframesRoute {
  public:
    // A video with more of them is answered as one of which none are known.
    static constexpr size_t kMost = 100000;

    // `folder` holds libovnxmedia, which is opened at the first request.
    explicit KeyframesRoute(std::string folder) : folder_(std::move(folder)) {}

    // Waits for the disk, until nobody holds the ticket; always on the same thread. {"keyframes":[0,2000],
    // "frameMs":16.67}, or 404 where they are not known.
    HttpReply Answer(const Capture& capture, const GalleryFolder& gallery, const TicketRef& ticket);

  private:
    bool OpenLibrary();

    const std::string folder_;
    bool tried_ = false;
    std::unique_ptr<const ovnxmedia::MediaLibrary> library_;
};

}  // namespace host::page
