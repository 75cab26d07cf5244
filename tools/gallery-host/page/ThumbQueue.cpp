#include "gallery-host/page/ThumbQueue.h"

#include <optional>
#include <string>
#include <utility>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/verbs/Thumbnail.h"

namespace host::page {

void ThumbQueue::Advance() {
    while (running_ < kAtOnce && !waiting_.empty()) {
        ThumbnailRequest request = std::move(waiting_.front());
        waiting_.pop_front();
        if (!request.ticket.expired()) Send(std::move(request));
    }
}

void ThumbQueue::Send(ThumbnailRequest request) {
    KXP::Document payload = MakeTexts({{"file", request.path}});
    payload.AddMember("width", request.width, payload.GetAllocator());
    payload.AddMember("height", request.height, payload.GetAllocator());
    ++running_;
    library_.Ask("GetThumbnail", payload,
                 [this, done = std::move(request.done)](KXP::Document* answer, const std::string&) {
                     --running_;
                     std::optional<std::string> png;
                     if (answer) png = ReadPngData(Text(Payload(*answer), "thumbnail"));
                     done({png ? std::move(*png) : std::string()});
                 });
}

}  // namespace host::page
