#include "common/JsonParse.h"

#include <cstring>

#include "CobalixUtil.h"
#include "common/Exception.h"

namespace KXP {

void JsonAssertionFailed(const char* expression, const char* file, int line) {
    LogMessage(LogFailure, file, line, "JSON assertion failed: %s", expression);
    throw Exception(Code::kUnexpected, "JSON value used as what it is not", 0);
}

namespace {

constexpr unsigned kParseFlags =
    rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

// Each skip returns the position behind what it skips, or the end of an unfinished one.
size_t SkipString(std::string_view text, size_t at) {
    while (at < text.size()) {
        const char* found = static_cast<const char*>(std::memchr(&text[at], '"', text.size() - at));
        if (!found) return text.size();
        const size_t quote = static_cast<size_t>(found - text.data());
        size_t backslashes = 0;
        while (backslashes < quote - at && text[quote - 1 - backslashes] == '\\')
            ++backslashes;
        at = quote + 1;
        if (backslashes % 2 == 0) return at;
    }
    return at;
}

size_t SkipComment(std::string_view text, size_t at) {
    if (at >= text.size()) return at;
    const bool block = text[at] == '*';
    if (!block && text[at] != '/') return at;
    const size_t end = block ? text.find("*/", at + 1) : text.find('\n', at);
    if (end == std::string_view::npos) return text.size();
    return end + (block ? 2 : 1);
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool ExponentFits(std::string_view text, size_t at) {
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    while (at < text.size() && text[at] == '0')
        ++at;
    const size_t first = at;
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at - first <= static_cast<size_t>(kMaxExponentDigits);
}

}  // namespace

rapidjson::ParseResult CheckJsonLimits(std::string_view text) {
    int depth = 0;
    for (size_t at = 0; at < text.size();) {
        const char c = text[at++];
        switch (c) {
            case '"':
                at = SkipString(text, at);
                break;
            case '/':
                at = SkipComment(text, at);
                break;
            case '{':
            case '[':
                if (++depth > kMaxJsonDepth) return {rapidjson::kParseErrorTermination, at - 1};
                break;
            case '}':
            case ']':
                --depth;
                break;
            case 'e':
            case 'E':
                if (at >= 2 && (IsDigit(text[at - 2]) || text[at - 2] == '.') && !ExponentFits(text, at))
                    return {rapidjson::kParseErrorTermination, at - 1};
                break;
            default:
                break;
        }
    }
    return {};
}

rapidjson::ParseResult ParseJSON(std::string_view text, Document& document) {
    const rapidjson::ParseResult limits = CheckJsonLimits(text);
    if (limits.IsError()) return limits;
    document.Parse<kParseFlags>(text.data(), text.size());
    return {document.GetParseError(), document.GetErrorOffset()};
}

}  // namespace KXP
