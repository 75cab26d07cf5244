// The route /thumb: a capture's thumbnail, which browsers may keep, since a changed capture has a new handle.
#pragma once

#include <string>

#include "gallery-host/page/HttpMessage.h"
#include "gallery-host/page/PageBus.h"

namespace host::page {

struct ThumbSubject {
    std::string handle;
    std::string path;
};

void AnswerThumb(const HttpRequest& request, const Target& target, const ThumbSubject& subject, IPageBus& bus,
                 const Ticket& ticket, const Respond& respond);

}  // namespace host::page
