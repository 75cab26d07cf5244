#include "common/json/JsonParse.h"

#include <algorithm>
#include <memory>

#include "CobalixUtil.h"
#include "common/json/JsonEvents.h"
#include "common/results/Exception.h"

namespace KXP {

void JsonAssertionFailed(const char* expression, const char* file, int line) {
    LogMessage(LogFailure, file, line, "JSON assertion failed: %s", expression);
    throw Exception(Code::kUnexpected, "JSON value used as what it is not", 0);
}

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

rapidjson::ParseResult ParseInto(char* text, Document& document, const ElementReader* elements) {
    rapidjson::ParseResult result;
    const auto generate = [&](Document& target) {
        result = elements ? ParseElements(text, target, *elements) : ParseEvents(text, target);
        return !result.IsError();
    };
    document.Populate(generate);
    return result;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether an exponent begins at the letter at `at` and has more digits than it may.
bool IsLongExponent(std::string_view text, size_t at) {
    if (at == 0 || (!IsDigit(text[at - 1]) && text[at - 1] != '.')) return false;
    ++at;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
    while (at < text.size() && text[at] == '0')
        ++at;
    const size_t first = at;
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at - first > static_cast<size_t>(kMaxExponentDigits);
}

// Whether any byte after the first is an "e" that follows a digit, or what may pass for one.
// A loop without branches over a fixed number of bytes, which compilers turn into vector instructions.
constexpr size_t kBlock = 64;
bool BlockMayHoldExponent(const char* bytes) {
    unsigned char found = 0;
    for (size_t i = 0; i < kBlock; ++i) {
        const bool number = (static_cast<unsigned char>(bytes[i] & 0xF0) == 0x30) | (bytes[i] == '.');
        const bool letter = static_cast<unsigned char>(bytes[i + 1] | 0x20) == 'e';
        found |= static_cast<unsigned char>(number & letter);
    }
    return found != 0;
}

// Ignores what is a string, to stay cheap: this precedes every parse.
bool MayHoldLongExponent(std::string_view text) {
    const auto lookAt = [&](size_t from, size_t to) {
        for (size_t at = from; at < to; ++at) {
            if ((text[at] == 'e' || text[at] == 'E') && IsLongExponent(text, at)) return true;
        }
        return false;
    };
    size_t at = 1;
    for (; at + kBlock <= text.size(); at += kBlock) {
        if (BlockMayHoldExponent(&text[at - 1]) && lookAt(at, at + kBlock)) return true;
    }
    return lookAt(at, text.size());
}

// Each skip returns the position after what it skips, or beyond the end for one that is unfinished.
size_t SkipString(std::string_view text, size_t at) {
    while (at < text.size() && text[at] != '"')
        at += text[at] == '\\' ? 2 : 1;
    return at + 1;
}

size_t SkipComment(std::string_view text, size_t at) {
    if (at >= text.size()) return at;
    // What is neither of the two kinds is an error anyway.
    const bool block = text[at] == '*';
    const size_t end = block ? text.find("*/", at + 1) : text.find('\n', at);
    if (end == std::string_view::npos) return text.size();
    return end + (block ? 2 : 1);
}

// Checks the exponents of numbers, passing over strings and comments.
rapidjson::ParseResult CheckExponents(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const char c = text[at++];
        if (c == '"') {
            at = SkipString(text, at);
        } else if (c == '/') {
            at = SkipComment(text, at);
        } else if ((c == 'e' || c == 'E') && IsLongExponent(text, at - 1)) {
            return {rapidjson::kParseErrorTermination, at - 1};
        }
    }
    return {};
}

// Parses the text without its byte-order mark, unless it holds a long exponent.
template <typename Parse>
rapidjson::ParseResult Checked(char* text, size_t size, Parse parse) {
    if (std::string_view(text, size).substr(0, kUtf8Mark.size()) == kUtf8Mark) {
        text += kUtf8Mark.size();
        size -= kUtf8Mark.size();
    }
    if (MayHoldLongExponent({text, size})) {
        const rapidjson::ParseResult exponents = CheckExponents({text, size});
        if (exponents.IsError()) return exponents;
    }
    return parse(text);
}

}  // namespace

template rapidjson::ParseResult ParseEvents(char* text, IJsonSink& sink);

rapidjson::ParseResult ParseJSONInPlace(char* text, size_t size, Document& document,
                                        const ElementReader* elements) {
    return Checked(text, size, [&](char* checked) { return ParseInto(checked, document, elements); });
}

rapidjson::ParseResult ParseJSONInPlace(char* text, size_t size, IJsonSink& sink) {
    return Checked(text, size, [&](char* checked) { return ParseEvents(checked, sink); });
}

rapidjson::ParseResult ParseJSON(std::string_view text, Document& document, const ElementReader* elements) {
    // Left unset, unlike make_unique's.
    const std::unique_ptr<char[]> copy(new char[text.size() + kJsonTextSlack]);
    std::copy(text.begin(), text.end(), copy.get());
    std::fill_n(copy.get() + text.size(), kJsonTextSlack, '\0');
    return ParseJSONInPlace(copy.get(), text.size(), document, elements);
}

}  // namespace KXP
