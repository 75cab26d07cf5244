#include "gallery-host/page/Site.h"

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include "gallery-host/page/MediaRoute.h"
#include "gallery-host/page/ThumbRoute.h"

namespace host::page {
namespace {

// The rest of the path if it begins with `route`.
std::optional<std::string> After(const std::string& path, std::string_view route) {
    if (path.compare(0, route.size(), route) != 0) return std::nullopt;
    return path.substr(route.size());
}

}  // namespace

Site::Site(const Parts& parts, uint16_t port, RunElsewhere runElsewhere)
    : parts_(parts),
      runElsewhere_(std::move(runElsewhere)),
      socketToken_(NewSecret()),
      rules_(port, NewSecret()) {}

void Site::Answer(const HttpRequest& request, const Ticket& ticket, Respond respond) {
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
    const std::optional<std::string> media = After(target.path, "/media/");
    const std::optional<std::string> thumb = After(target.path, "/thumb/");
    if (!media && !thumb) return false;
    if (!rules_.HasCookie(request)) {
        respond(TextReply(403, "the browser was not launched"));
        return true;
    }
    const std::string handle = media ? *media : *thumb;
    std::optional<Capture> capture = parts_.handles.Find(handle);
    if (!capture) {
        respond(TextReply(404, "there is no such capture"));
    } else if (thumb) {
        AnswerThumb(request, target, {handle, capture->path}, parts_.bus, ticket, respond);
    } else {
        runElsewhere_([&gallery = parts_.gallery, request, capture = std::move(*capture), respond,
                       ref = TicketRef(ticket)] {
            if (!ref.expired()) respond(MediaReply(request, capture, gallery));
        });
    }
    return true;
}

}  // namespace host::page
