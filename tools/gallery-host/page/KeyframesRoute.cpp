#include "gallery-host/page/KeyframesRoute.h"

#include <cmath>
#include <exception>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/message/Envelope.h"

namespace host::page {
namespace {

int NobodyWaits(void* ticket) {
    return static_cast<const TicketRef*>(ticket)->expired() ? 1 : 0;
}

// From units of 100 ns, to a hundredth of a millisecond.
double Milliseconds(int64_t time) {
    return std::round(static_cast<double>(time) / 100) / 100;
}

HttpReply ReplyOf(const OvnxMediaKeyframeList& list) {
    KXP::Document body(rapidjson::kObjectType);
    KXP::Allocator& allocator = body.GetAllocator();
    KXP::Value times(rapidjson::kArrayType);
    for (size_t i = 0; i < list.count; ++i)
        times.PushBack(Milliseconds(list.times[i]), allocator);
    body.AddMember("keyframes", times, allocator);
    body.AddMember("frameMs", Milliseconds(list.frame), allocator);
    HttpReply reply;
    reply.fields = {{"Content-Type", "application/json"},
                    {"Cache-Control", "private, max-age=31536000, immutable"}};
    reply.body = ToText(body);
    return reply;
}

}  // namespace

HttpReply KeyframesRoute::Answer(const Capture& capture, const GalleryFolder& gallery,
                                 const TicketRef& ticket) {
    struct stat status {};
    const KXP::FileDescriptor file = gallery.Open(capture.path, status);
    if (!file.IsOpen() || !capture.isVideo || !OpenLibrary()) return TextReply(404, "no keyframes are known");
    std::vector<int64_t> times(kMost);
    TicketRef waiting = ticket;
    OvnxMediaKeyframeList list{times.data(), times.size(), NobodyWaits, &waiting, 0, 0};
    if (library_->keyframes(file.get(), &list) != OVNX_MEDIA_OK)
        return TextReply(404, "no keyframes are known");
    return ReplyOf(list);
}

bool KeyframesRoute::OpenLibrary() {
    if (!tried_) {
        tried_ = true;
        try {
            library_ = std::make_unique<const ovnxmedia::MediaLibrary>(folder_);
        } catch (const std::exception& error) {
            Say(std::string("keyframes cannot be shown: ") + error.what());
        }
    }
    return library_ != nullptr;
}

}  // namespace host::page
