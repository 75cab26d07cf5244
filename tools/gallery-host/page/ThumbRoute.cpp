#include "gallery-host/page/ThumbRoute.h"

#include <charconv>
#include <optional>

namespace host::page {
namespace {

// Larger pictures are for /media.
constexpr unsigned kMaxSide = 2048;

std::optional<unsigned> ReadSide(std::string_view text) {
    unsigned side = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (side < 1 || side > kMaxSide) return std::nullopt;
    return side;
}

void AddCaching(HttpReply& reply, const std::string& tag) {
    reply.fields.emplace_back("ETag", tag);
    reply.fields.emplace_back("Cache-Control", "private, max-age=31536000, immutable");
}

HttpReply ReplyOf(const Thumbnail& thumbnail, const std::string& tag) {
    if (thumbnail.png.empty()) return TextReply(422, "there is no thumbnail of this file");
    HttpReply reply;
    reply.fields.emplace_back("Content-Type", "image/png");
    AddCaching(reply, tag);
    reply.body = thumbnail.png;
    return reply;
}

}  // namespace

void AnswerThumb(const HttpRequest& request, const Target& target, const ThumbSubject& subject, IPageBus& bus,
                 const Ticket& ticket, const Respond& respond) {
    const std::optional<unsigned> width = ReadSide(target.Query("w"));
    const std::optional<unsigned> height = ReadSide(target.Query("h"));
    if (!width || !height) {
        respond(TextReply(400, "w and h are to be numbers from 1 to 2048"));
        return;
    }
    const std::string tag =
        "\"" + subject.handle + "-" + std::to_string(*width) + "x" + std::to_string(*height) + "\"";
    if (MatchesTag(request.Get("if-none-match"), tag)) {
        HttpReply reply;
        reply.status = 304;
        AddCaching(reply, tag);
        respond(std::move(reply));
        return;
    }
    bus.MakeThumbnail({subject.path, *width, *height, ticket,
                       [respond, tag](const Thumbnail& thumbnail) { respond(ReplyOf(thumbnail, tag)); }});
}

}  // namespace host::page
