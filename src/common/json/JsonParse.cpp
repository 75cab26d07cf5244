#include "common/json/JsonParse.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "CobalixUtil.h"
#include "common/results/Exception.h"
#include "common/text/TextUtil.h"

namespace KXP {

using Word = uint64_t;
constexpr Word kEachByte = 0x0101010101010101;

inline Word LoadWord(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Marks the zero bytes of a word by their high bits, and perhaps some bytes beside them.
inline Word ZeroBytes(Word word) {
    return (word - kEachByte) & ~word & (kEachByte * 0x80);
}

// Marks by its high bit the first byte of a little-endian word that is a quote, a backslash, a control
// character or beyond ASCII, and perhaps some bytes after it. 0 when there is none.
inline Word SpecialBytes(Word word) {
    const Word control = word - kEachByte * 0x20;
    const Word quotes = ZeroBytes(word ^ (kEachByte * '"'));
    const Word backslashes = ZeroBytes(word ^ (kEachByte * '\\'));
    return (word | control | quotes | backslashes) & (kEachByte * 0x80);
}

inline bool IsBeyondAscii(char c) {
    return static_cast<unsigned char>(c) >= 0x80;
}

// A text whose strings are unescaped where they stand. Unlike RapidJSON's own stream of this kind it passes
// over plain characters by the word, which needs readable bytes after the zero byte at its end.
class JsonTextStream {
  public:
    using Ch = char;

    // `special` is set when a string holds what may not be valid UTF-8.
    JsonTextStream(char* text, bool& special) : at_(text), begin_(text), special_(&special) {}

    Ch Peek() const { return *at_; }
    Ch Take() { return *at_++; }
    size_t Tell() const { return static_cast<size_t>(at_ - begin_); }

    Ch* PutBegin() { return to_ = at_; }
    void Put(Ch c) {
        if (IsBeyondAscii(c)) *special_ = true;
        *to_++ = c;
    }
    size_t PutEnd(Ch* begin) const { return static_cast<size_t>(to_ - begin); }
    void Flush() {}

    // Moves at least one character of a string on, and all plain ones up to the first escape.
    void Move() {
        Put(Take());
        if (to_ != at_) return;
        Word special = 0;
        while ((special = SpecialBytes(LoadWord(at_))) == 0)
            at_ += sizeof(Word);
        at_ += static_cast<size_t>(__builtin_ctzll(special)) / 8;
        to_ = at_;
    }
    void SkipSpace() {
        char* at = at_;
        while (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')
            ++at;
        at_ = at;
    }

  private:
    char* at_;
    char* to_ = nullptr;
    char* begin_;
    bool* special_;
};

// Found by the reader in place of its own, which copies the stream to and fro.
inline void SkipWhitespace(JsonTextStream& text) {
    text.SkipSpace();
}

// Names UTF-8 in the reader's template arguments.
struct JsonTextUtf8 : rapidjson::UTF8<> {};

}  // namespace KXP

namespace rapidjson {
template <>
struct StreamTraits<KXP::JsonTextStream> {
    enum { copyOptimization = 1 };
};

// Both streams are the same one. The reader names the others without using them when it parses in place.
template <>
struct Transcoder<KXP::JsonTextUtf8, KXP::JsonTextUtf8> {
    template <typename In, typename Out>
    static bool Transcode(In& text, Out&) {
        text.Move();
        return true;
    }
    template <typename In, typename Out>
    static bool Validate(In& text, Out& out) {
        return Transcode(text, out);
    }
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
    EventLimiter(Document& document, bool& special) : document_(document), special_(special) {}

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
    // The document gets copies: a value that points into the text would do so also when it is copied into a
    // document that lives longer.
    bool String(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && document_.String(text, size, true);
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && document_.Key(text, size, true);
    }
    bool StartObject() { return Enter() && document_.StartObject(); }
    bool EndObject(rapidjson::SizeType members) { return Leave() && document_.EndObject(members); }
    bool StartArray() { return Enter() && document_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) { return Leave() && document_.EndArray(elements); }

    bool metBadText() const { return badText_; }

  private:
    bool IsText(const char* text, size_t size) {
        if (!special_) return true;
        special_ = false;
        badText_ = !IsValidUtf8({text, size});
        return !badText_;
    }
    bool Enter() { return ++depth_ <= kMaxJsonDepth; }
    bool Leave() {
        --depth_;
        return true;
    }

    Document& document_;
    bool& special_;  // the string at hand needs a look
    int depth_ = 0;
    bool badText_ = false;
};

rapidjson::ParseResult ParseInto(char* text, Document& document) {
    rapidjson::ParseResult result;
    const auto generate = [&](Document& target) {
        bool special = false;
        JsonTextStream stream(text, special);
        EventLimiter limiter(target, special);
        rapidjson::GenericReader<JsonTextUtf8, JsonTextUtf8, ThrowingAllocator> reader;
        result = reader.Parse<rapidjson::kParseCommentsFlag | rapidjson::kParseInsituFlag>(stream, limiter);
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
    const bool block = text[at] == '*';
    if (!block && text[at] != '/') return at;
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

}  // namespace

rapidjson::ParseResult ParseJSONInPlace(char* text, size_t size, Document& document) {
    if (std::string_view(text, size).substr(0, kUtf8Mark.size()) == kUtf8Mark) {
        text += kUtf8Mark.size();
        size -= kUtf8Mark.size();
    }
    if (MayHoldLongExponent({text, size})) {
        const rapidjson::ParseResult exponents = CheckExponents({text, size});
        if (exponents.IsError()) return exponents;
    }
    return ParseInto(text, document);
}

rapidjson::ParseResult ParseJSON(std::string_view text, Document& document) {
    // Left unset, unlike make_unique's.
    const std::unique_ptr<char[]> copy(new char[text.size() + kJsonTextSlack]);
    std::copy(text.begin(), text.end(), copy.get());
    std::fill_n(copy.get() + text.size(), kJsonTextSlack, '\0');
    return ParseJSONInPlace(copy.get(), text.size(), document);
}

}  // namespace KXP
