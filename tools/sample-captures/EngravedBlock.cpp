#include "sample-captures/EngravedBlock.h"

#include <cstdio>

namespace samples {
namespace {

std::string JsonText(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            out += escape;
        } else {
            out += c;
        }
    }
    return out + '"';
}

std::string JsonValue(const std::variant<std::string, int64_t>& value) {
    if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
    return JsonText(std::get<std::string>(value));
}

}  // namespace

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        uint32_t bits = 0;
        for (size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0u);
        for (size_t i = 0; i < 4; ++i)
            out += i <= group.size() ? kAlphabet[bits >> (18 - 6 * i) & 0x3F] : '=';
    }
    return out;
}

std::string EngravedBlock(std::string_view source, const std::vector<BlockMember>& members) {
    std::string inner = "{";
    for (const BlockMember& member : members) {
        if (inner.size() > 1) inner += ',';
        inner += JsonText(member.name) + ':' + JsonValue(member.value);
    }
    return R"({"Source":)" + JsonText(source) + R"(,"B64":")" + Base64(inner + '}') + R"("})";
}

}  // namespace samples
