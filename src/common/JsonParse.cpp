#include "common/JsonParse.h"

#include <cstring>

#include "CobalixUtil.h"
#include "common/Exception.h"
#include "common/TextUtil.h"

namespace KXP {

// A byte stream that ends where the text ends. RapidJSON's own for text without a terminator is slower,
// because the parser cannot keep it in registers.
class JsonTextStream {
  public:
    using Ch = char;

    explicit JsonTextStream(std::string_view text)
        : at_(text.data()), end_(text.data() + text.size()), begin_(text.data()) {}

    Ch Peek() const { return at_ == end_ ? '\0' : *at_; }
    Ch Take() { return at_ == end_ ? '\0' : *at_++; }
    size_t Tell() const { return static_cast<size_t>(at_ - begin_); }

    // Of the stream concept, for parsing in place only.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    void Flush() {}
    size_t PutEnd(Ch*) { return 0; }

  private:
    const char* at_;
    const char* end_;
    const char* begin_;
};

}  // namespace KXP

namespace rapidjson {
template <>
struct StreamTraits<KXP::JsonTextStream> {
    enum { copyOptimization = 1 };
};
}  // namespace rapidjson

namespace KXP {

void JsonAssertionFailed(const char* expression, const char* file, int line) {
    LogMessage(LogFailure, file, line, "JSON assertion failed: %s", expression);
    throw Exception(Code::kUnexpected, "JSON value used as what it is not", 0);
}

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Hands the parser's events to a document, and stops the parser before it nests too deep and at text that is
// not UTF-8.
class EventLimiter {
  public:
    explicit EventLimiter(Document& document) : document_(document) {}

    bool Null() { return document_.Null(); }
    bool Bool(bool b) { return document_.Bool(b); }
    bool Int(int i) { return document_.Int(i); }
    bool Uint(unsigned u) { return document_.Uint(u); }
    bool Int64(int64_t i) { return document_.Int64(i); }
    bool Uint64(uint64_t u) { return document_.Uint64(u); }
    bool Double(double d) { return document_.Double(d); }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool copy) {
        return document_.RawNumber(text, size, copy);
    }
    bool String(const char* text, rapidjson::SizeType size, bool copy) {
        return IsText(text, size) && document_.String(text, size, copy);
    }
    bool Key(const char* text, rapidjson::SizeType size, bool copy) {
        return IsText(text, size) && document_.Key(text, size, copy);
    }
    bool StartObject() { return Enter() && document_.StartObject(); }
    bool EndObject(rapidjson::SizeType members) { return Leave() && document_.EndObject(members); }
    bool StartArray() { return Enter() && document_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) { return Leave() && document_.EndArray(elements); }

    bool metBadText() const { return badText_; }

  private:
    // Of what has been unescaped: a lone surrogate is let through by the parser.
    bool IsText(const char* text, size_t size) {
        badText_ = !IsValidUtf8({text, size});
        return !badText_;
    }
    bool Enter() { return ++depth_ <= kMaxJsonDepth; }
    bool Leave() {
        --depth_;
        return true;
    }

    Document& document_;
    int depth_ = 0;
    bool badText_ = false;
};

rapidjson::ParseResult ParseInto(std::string_view text, Document& document) {
    rapidjson::ParseResult result;
    const auto generate = [&](Document& target) {
        JsonTextStream stream(text);
        EventLimiter limiter(target);
        rapidjson::GenericReader<Utf8, Utf8, ThrowingAllocator> reader;
        result = reader.Parse<rapidjson::kParseCommentsFlag>(stream, limiter);
        if (limiter.metBadText()) result.Set(rapidjson::kParseErrorStringInvalidEncoding, result.Offset());
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

using Word = uint64_t;
constexpr Word kEachByte = 0x0101010101010101;

Word LoadWord(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Marks the zero bytes of a word by their high bits, and perhaps some bytes beside them.
Word ZeroBytes(Word word) {
    return (word - kEachByte) & ~word & (kEachByte * 0x80);
}

// With no regard to what is a string. Eight bytes at a time, because this comes before every parse; only an
// "e" behind a byte of the columns that hold the digits and the point is looked at closely.
bool MayHoldLongExponent(std::string_view text) {
    const auto lookAt = [&](size_t from, size_t to) {
        for (size_t at = from; at < to; ++at) {
            if ((text[at] == 'e' || text[at] == 'E') && IsLongExponent(text, at)) return true;
        }
        return false;
    };
    size_t at = 1;
    for (; at + sizeof(Word) <= text.size(); at += sizeof(Word)) {
        const Word letters = ZeroBytes((LoadWord(&text[at]) | kEachByte * 0x20) ^ (kEachByte * 'e'));
        const Word digits = ZeroBytes((LoadWord(&text[at - 1]) & (kEachByte * 0xE0)) ^ (kEachByte * 0x20));
        if ((letters & digits) != 0 && lookAt(at, at + sizeof(Word))) return true;
    }
    return lookAt(at, text.size());
}

// Each skip returns the position behind what it skips, or the end of an unfinished one.
size_t SkipString(std::string_view text, size_t at) {
    while (at < text.size() && text[at] != '"')
        at += text[at] == '\\' ? 2 : 1;
    return at + 1;
}

size_t SkipComment(std::string_view text, size_t at) {
    if (at >= text.size()) return at;
    const bool block = text[at] == '*';
    if (!block && text[at] != '/') return at;
    const size_t end = block ? text.find("*/", at + 1) : text.find('\n', at);
    if (end == std::string_view::npos) return text.size();
    return end + (block ? 2 : 1);
}

// Tells the exponents of numbers from what strings and comments hold.
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

}  // namespace

rapidjson::ParseResult ParseJSON(std::string_view text, Document& document) {
    if (text.substr(0, kUtf8Mark.size()) == kUtf8Mark) text.remove_prefix(kUtf8Mark.size());
    if (MayHoldLongExponent(text)) {
        const rapidjson::ParseResult exponents = CheckExponents(text);
        if (exponents.IsError()) return exponents;
    }
    return ParseInto(text, document);
}

}  // namespace KXP
