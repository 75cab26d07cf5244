#include "gallery-host/page/HttpMessage.h"

#include <algorithm>

#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"

namespace host::page {
namespace {

int HexValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> Decode(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size()) return std::nullopt;
            const int high = HexValue(text[i + 1]);
            const int low = HexValue(text[i + 2]);
            if (high < 0 || low < 0) return std::nullopt;
            c = static_cast<char>(high * 16 + low);
            i += 2;
        }
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) return std::nullopt;
        decoded += c;
    }
    if (!IsUtf8(decoded)) return std::nullopt;
    return decoded;
}

// Cuts what precedes the first `separator` off `text`.
std::string_view TakeUntil(std::string_view& text, char separator) {
    const size_t at = text.find(separator);
    const std::string_view part = text.substr(0, at);
    text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
    return part;
}

std::string_view Trim(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

size_t HttpRequest::Count(std::string_view name) const {
    const auto named = [name](const auto& field) { return field.first == name; };
    return static_cast<size_t>(std::count_if(fields.begin(), fields.end(), named));
}

std::string_view HttpRequest::Get(std::string_view name) const {
    for (const auto& [key, value] : fields)
        if (key == name) return value;
    return {};
}

HttpReply TextReply(unsigned status, std::string_view text) {
    HttpReply reply;
    reply.status = status;
    reply.fields.emplace_back("Content-Type", "application/json");
    reply.body = ToText(MakeTexts({{"text", std::string(text)}}));
    return reply;
}

bool MatchesTag(std::string_view ifNoneMatch, std::string_view tag) {
    while (!ifNoneMatch.empty()) {
        std::string_view one = Trim(TakeUntil(ifNoneMatch, ','));
        if (one.substr(0, 2) == "W/") one.remove_prefix(2);
        if (one == "*" || one == tag) return true;
    }
    return false;
}

std::string_view Target::Query(std::string_view name) const {
    for (const auto& [key, value] : query)
        if (key == name) return value;
    return {};
}

std::optional<Target> ReadTarget(std::string_view text) {
    if (text.empty() || text[0] != '/') return std::nullopt;
    const std::optional<std::string> path = Decode(TakeUntil(text, '?'));
    if (!path) return std::nullopt;
    Target target{*path, {}};
    while (!text.empty()) {
        std::string_view value = TakeUntil(text, '&');
        const std::optional<std::string> name = Decode(TakeUntil(value, '='));
        const std::optional<std::string> decoded = Decode(value);
        if (!name || !decoded) return std::nullopt;
        target.query.emplace_back(*name, *decoded);
    }
    return target;
}

}  // namespace host::page
