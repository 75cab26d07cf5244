#include "gallery-host/page/HttpRules.h"

#include <algorithm>
#include <utility>

#include "gallery-host/page/Tokens.h"

namespace host::page {
namespace {

constexpr const char* kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; media-src 'self'; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
    "require-trusted-types-for 'script'; trusted-types lit-html";

bool IsLaunch(const HttpRequest& request) {
    const std::string_view target = request.target;
    return target.substr(0, target.find('?')) == "/launch";
}

// Whether a browser that names the request's site vouches for it.
bool IsOwnSite(const HttpRequest& request) {
    if (request.Count("sec-fetch-site") == 0) return true;
    if (request.Count("sec-fetch-site") > 1) return false;
    const std::string_view site = request.Get("sec-fetch-site");
    // "same-site" is not enough: a site has all ports of its host.
    if (site == "same-origin" || site == "none") return true;
    return IsLaunch(request) && request.Get("sec-fetch-mode") == "navigate" &&
           request.Get("sec-fetch-dest") == "document";
}

}  // namespace

HttpRules::HttpRules(uint16_t port, std::string cookie)
    : hosts_{"127.0.0.1:" + std::to_string(port), "localhost:" + std::to_string(port),
             "[::1]:" + std::to_string(port)},
      cookieName_("gallery-" + std::to_string(port)),
      cookie_(std::move(cookie)) {}

std::optional<HttpReply> HttpRules::Refuse(const HttpRequest& request) const {
    // The host first: a page that had its name resolved to this address must learn nothing.
    if (request.Count("host") != 1 || !IsOwnHost(request.Get("host")))
        return TextReply(403, "this address is not the server's");
    if (request.method == "OPTIONS") return TextReply(403, "there is nothing for other sites here");
    if (request.method != "GET" && request.method != "HEAD") {
        HttpReply reply = TextReply(405, "only GET and HEAD are known");
        reply.fields.emplace_back("Allow", "GET, HEAD");
        return reply;
    }
    const size_t origins = request.Count("origin");
    if (origins > 1 || (origins == 1 && !IsOwnOrigin(request.Get("origin"))) || !IsOwnSite(request))
        return TextReply(403, "the request comes from another site");
    return std::nullopt;
}

bool HttpRules::MayUpgrade(const HttpRequest& request) const {
    return request.method == "GET" && request.Count("origin") == 1 && IsOwnOrigin(request.Get("origin"));
}

bool HttpRules::HasCookie(const HttpRequest& request) const {
    for (const auto& [name, value] : request.fields) {
        if (name != "cookie") continue;
        for (size_t at = 0; at < value.size();) {
            const size_t start = value.find_first_not_of(' ', at);
            if (start == std::string::npos) break;
            const size_t end = std::min(value.find(';', start), value.size());
            const std::string_view pair = std::string_view(value).substr(start, end - start);
            const size_t equals = pair.find('=');
            if (pair.substr(0, equals) == cookieName_ && equals != std::string_view::npos &&
                SameSecret(pair.substr(equals + 1), cookie_))
                return true;
            at = end + 1;
        }
    }
    return false;
}

std::string HttpRules::SetCookie() const {
    return cookieName_ + "=" + cookie_ + "; Path=/; HttpOnly; SameSite=Strict";
}

bool HttpRules::IsOwnHost(std::string_view host) const {
    return std::find(hosts_.begin(), hosts_.end(), host) != hosts_.end();
}

bool HttpRules::IsOwnOrigin(std::string_view origin) const {
    constexpr std::string_view scheme = "http://";
    return origin.substr(0, scheme.size()) == scheme && IsOwnHost(origin.substr(scheme.size()));
}

void AddSecurityFields(Fields& fields) {
    fields.emplace_back("Content-Security-Policy", kContentPolicy);
    fields.emplace_back("Cross-Origin-Resource-Policy", "same-origin");
    fields.emplace_back("Cross-Origin-Opener-Policy", "same-origin");
    fields.emplace_back("X-Content-Type-Options", "nosniff");
    fields.emplace_back("Referrer-Policy", "no-referrer");
    const auto named = [](const auto& field) { return field.first == "Cache-Control"; };
    if (std::none_of(fields.begin(), fields.end(), named)) fields.emplace_back("Cache-Control", "no-store");
}

}  // namespace host::page
