// The route /media: the bytes of a capture.
#pragma once

#include "gallery-host/page/GalleryFolder.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/HttpMessage.h"

namespace host::page {

// Waits for the disk. With 404 for a file outside the gallery and 410 for one that is gone.
HttpReply MediaReply(const HttpRequest& request, const Capture& capture, const GalleryFolder& gallery);

}  // namespace host::page
