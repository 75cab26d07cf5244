// What a request to the page's server says, by plain forms of the rules. In lines: the method, the target,
// and the fields.
#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/Plain.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/page/ByteRange.h"
#include "gallery-host/page/HttpRules.h"

namespace {

using namespace host::page;
using plain::Demand;
using Texts = std::vector<std::string>;

constexpr const char* kSecret = "0123456789abcdef";
const std::string kCookie = std::string("gallery-7000=") + kSecret;

Texts Split(const std::string& text, char separator) {
    Texts parts(1);
    for (const char c : text)
        c == separator ? void(parts.emplace_back()) : parts.back().push_back(c);
    return parts;
}

Texts Values(const HttpRequest& request, const std::string& name) {
    Texts values;
    for (const auto& [key, value] : request.fields)
        if (key == name) values.push_back(value);
    return values;
}

bool IsOwn(const std::string& host) {
    return host == "127.0.0.1:7000" || host == "localhost:7000" || host == "[::1]:7000";
}

bool IsOwnPage(const HttpRequest& request, bool isNeeded) {
    const Texts origins = Values(request, "origin");
    if (origins.empty()) return !isNeeded;
    return origins.size() == 1 && origins[0].substr(0, 7) == "http://" && IsOwn(origins[0].substr(7));
}

void CheckRules(const HttpRequest& request) {
    const HttpRules rules(7000, kSecret);
    const Texts hosts = Values(request, "host");
    const Texts sites = Values(request, "sec-fetch-site");
    if (!rules.Refuse(request)) {
        Demand(hosts.size() == 1 && IsOwn(hosts[0]) && IsOwnPage(request, false));
        Demand(request.method == "GET" || request.method == "HEAD");
        const bool isLaunch = request.target.substr(0, request.target.find('?')) == "/launch";
        Demand(sites.empty() || sites == Texts{"same-origin"} || sites == Texts{"none"} || isLaunch);
    }
    Demand(rules.MayUpgrade(request) == (request.method == "GET" && IsOwnPage(request, true)));
    bool hasCookie = false;
    for (const std::string& field : Values(request, "cookie"))
        for (const std::string& pair : Split(field, ';'))
            hasCookie |= pair.substr(std::min(pair.find_first_not_of(' '), pair.size())) == kCookie;
    Demand(rules.HasCookie(request) == hasCookie);
}

std::optional<std::string> Unescaped(const std::string& text) {
    std::string out;
    for (size_t at = 0; at < text.size(); ++at) {
        const bool isEscape = text[at] == '%';
        const std::string digits = text.substr(at + 1, 2);
        if (isEscape &&
            (digits.size() < 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos))
            return {};
        out += isEscape ? static_cast<char>(std::stoi(digits, nullptr, 16)) : text[at];
        at += isEscape ? 2 : 0;
        if (std::iscntrl(static_cast<unsigned char>(out.back()))) return {};
    }
    return host::IsUtf8(out) ? std::optional(out) : std::nullopt;
}

void CheckTarget(const std::string& text) {
    const std::optional<Target> target = ReadTarget(text);
    const size_t mark = std::min(text.find('?'), text.size());
    const std::optional<std::string> path = Unescaped(text.substr(0, mark));
    if (!target) return;
    Demand(text[0] == '/' && path && target->path == *path);
    const std::string query = mark < text.size() ? text.substr(mark + 1) : "";
    // An "&" at the end begins nothing.
    Texts pairs = Split(query, '&');
    if (pairs.back().empty()) pairs.pop_back();
    Demand(pairs.size() == target->query.size());
    for (size_t i = 0; i < pairs.size(); ++i) {
        const size_t equals = std::min(pairs[i].find('='), pairs[i].size());
        const std::string value = equals < pairs[i].size() ? pairs[i].substr(equals + 1) : "";
        Demand(Unescaped(pairs[i].substr(0, equals)) == target->query[i].first);
        Demand(Unescaped(value) == target->query[i].second);
    }
}

void CheckRange(const std::string& field) {
    for (const uint64_t size : {uint64_t{0}, uint64_t{1}, uint64_t{1000}, uint64_t{INT64_MAX}}) {
        const ByteRange range = ReadRange(field, size);
        if (range.kind == ByteRange::Kind::kWhole) Demand(range.first == 0 && range.length == size);
        if (range.kind != ByteRange::Kind::kPart) continue;
        Demand(range.length > 0 && range.first < size && range.length <= size - range.first);
        // What it says of itself reads as the same.
        const std::string same =
            "bytes=" + std::to_string(range.first) + "-" + std::to_string(range.first + range.length - 1);
        const ByteRange again = ReadRange(same, size);
        Demand(again.kind == range.kind && again.first == range.first && again.length == range.length);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Texts lines = Split({reinterpret_cast<const char*>(data), size}, '\n');
    HttpRequest request;
    request.method = lines[0];
    request.target = lines.size() > 1 ? lines[1] : "";
    for (size_t i = 2; i < lines.size(); ++i) {
        const size_t colon = std::min(lines[i].find(':'), lines[i].size());
        request.fields.emplace_back(lines[i].substr(0, colon),
                                    colon < lines[i].size() ? lines[i].substr(colon + 1) : "");
    }
    CheckRules(request);
    CheckTarget(request.target);
    CheckRange(std::string(request.Get("range")));
    const std::string tags(request.Get("if-none-match"));
    if (MatchesTag(tags, "\"a-b\"")) Demand(tags.find("\"a-b\"") != tags.npos || tags.find('*') != tags.npos);
    return 0;
}
