#include "gallery-host/page/Site.h"

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "gallery-host/page/MediaRoute.h"
#include "gallery-host/page/ThumbRoute.h"

namespace host::page {
namespace {

enum class Route { kMedia, kThumb, kKeyframes };

struct CaptureRoute {
    std::string_view prefix;
    Route route;
};

constexpr CaptureRoute kCaptureRoutes[] = {
    {"/media/", Route::kMedia}, {"/thumb/", Route::kThumb}, {"/keyframes/", Route::kKeyframes}};

const CaptureRoute* FindRoute(const std::string& path) {
    for (const CaptureRoute& route : kCaptureRoutes)
        if (path.compare(0, route.prefix.size(), route.prefix) == 0) return &route;
    return nullptr;
}

}  // namespace

Site::Site(const Parts& parts, uint16_t port, Elsewhere elsewhere)
    : parts_(parts),
      elsewhere_(std::move(elsewhere)),
      socketToken_(NewSecret()),
      rules_(port, NewSecret()),
      keyframes_(parts.mediaFolder) {}

void Site::Answer(const HttpRequest& request, const Ticket& ticket, const Respond& respond) {
    if (std::optional<HttpReply> refusal = rules_.Refuse(request)) {
        respond(std::move(*refusal));
        return;
    }
    const std::optional<Target> target = ReadTarget(request.target);
    if (!target) {
        respond(TextReply(400, "the address cannot be read"));
        return;
    }
    if (target->path == "/launch") {
        respond(Launch(request, *target));
        return;
    }
    if (AnswerForCapture(request, *target, ticket, respond)) return;
    std::optional<HttpReply> file = parts_.table.Find(target->path);
    respond(file ? std::move(*file) : TextReply(404, "there is no such address"));
}

HttpReply Site::Launch(const HttpRequest& request, const Target& target) {
    if (request.method != "GET") return TextReply(405, "the launch is for GET");
    if (!launches_.Redeem(target.Query("token"), LaunchTokens::Clock::now()))
        return TextReply(403, "this address works once, for a short time; start gallery-host page again");
    HttpReply reply;
    reply.fields = {{"Content-Type", "text/html; charset=utf-8"},
                    {"Set-Cookie", rules_.SetCookie()},
                    // Another program's page may have had this port before. Thumbnails stay in the cache.
                    {"Clear-Site-Data", "\"storage\""}};
    reply.body =
        "<!doctype html><meta charset=\"utf-8\"><title>Gallery</title>"
        "<meta name=\"socket-token\" content=\"" +
        socketToken_ + "\"><script src=\"/launch.js\" defer></script>\n";
    return reply;
}

bool Site::AnswerForCapture(const HttpRequest& request, const Target& target, const Ticket& ticket,
                            const Respond& respond) {
    const CaptureRoute* const route = FindRoute(target.path);
    if (!route) return false;
    if (!rules_.HasCookie(request)) {
        respond(TextReply(403, "the browser was not launched"));
        return true;
    }
    const std::string handle = target.path.substr(route->prefix.size());
    const std::optional<Capture> capture = parts_.handles.Find(handle);
    if (!capture)
        respond(TextReply(404, "there is no such capture"));
    else if (route->route == Route::kThumb)
        AnswerThumb(request, target, {handle, capture->path}, parts_.bus, ticket, respond);
    else if (route->route == Route::kKeyframes)
        AnswerKeyframes(*capture, ticket, respond);
    else
        AnswerMedia(request, *capture, ticket, respond);
    return true;
}

void Site::AnswerMedia(const HttpRequest& request, const Capture& capture, const Ticket& ticket,
                       const Respond& respond) const {
    elsewhere_.disk([&gallery = parts_.gallery, request, capture, respond, ref = TicketRef(ticket)] {
        if (!ref.expired()) respond(MediaReply(request, capture, gallery));
    });
}

void Site::AnswerKeyframes(const Capture& capture, const Ticket& ticket, const Respond& respond) {
    elsewhere_.media([this, capture, respond, ref = TicketRef(ticket)] {
        if (!ref.expired()) respond(keyframes_.Answer(capture, parts_.gallery, ref));
    });
}

}  // namespace host::page
