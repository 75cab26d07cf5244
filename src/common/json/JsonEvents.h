// What the parser's events pass on their way into a document. For the parser's own files alone.
#pragma once

#include <cmath>
#include <cstdint>

#include "common/json/JsonParse.h"
#include "common/json/JsonTextStream.h"
#include "common/text/TextUtil.h"

namespace KXP {

// Passes the parser's events on, and stops the parser before it nests too deep, at text that is not UTF-8,
// and at numbers that it makes infinite, which no writer writes.
template <typename Handler>
class EventLimiter {
  public:
    EventLimiter(Handler& handler, bool& special) : handler_(handler), special_(special) {}

    bool Null() { return handler_.Null(); }
    bool Bool(bool b) { return handler_.Bool(b); }
    bool Int(int i) { return handler_.Int(i); }
    bool Uint(unsigned u) { return handler_.Uint(u); }
    bool Int64(int64_t i) { return handler_.Int64(i); }
    bool Uint64(uint64_t u) { return handler_.Uint64(u); }
    bool Double(double d) {
        return Check(!std::isinf(d), rapidjson::kParseErrorNumberTooBig) && handler_.Double(d);
    }
    // The parser names it without calling it: numbers are no texts here.
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
    // The document gets copies: a value that points into the text would do so also when it is copied into a
    // document that lives longer.
    bool String(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && handler_.String(text, size, true);
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && handler_.Key(text, size, true);
    }
    bool StartObject() { return Enter() && handler_.StartObject(); }
    bool EndObject(rapidjson::SizeType members) {
        --depth_;
        return handler_.EndObject(members);
    }
    bool StartArray() { return Enter() && handler_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) {
        --depth_;
        return handler_.EndArray(elements);
    }

    // What stopped the parser, where the result is to name it.
    rapidjson::ParseErrorCode error() const { return error_; }

  private:
    bool IsText(const char* text, size_t size) {
        if (!special_) return true;
        special_ = false;
        return Check(IsValidUtf8({text, size}), rapidjson::kParseErrorStringInvalidEncoding);
    }
    bool Check(bool isGood, rapidjson::ParseErrorCode error) {
        if (!isGood) error_ = error;
        return isGood;
    }
    bool Enter() { return ++depth_ <= kMaxJsonDepth; }

    Handler& handler_;
    bool& special_;  // the string at hand needs a look
    int depth_ = 0;
    rapidjson::ParseErrorCode error_ = rapidjson::kParseErrorNone;
};

// Parses the text in place, with the limits that JsonParse.h describes but that of exponents.
template <typename Handler>
rapidjson::ParseResult ParseEvents(char* text, Handler& handler) {
    bool special = false;
    JsonTextStream stream(text, special);
    EventLimiter limiter(handler, special);
    rapidjson::GenericReader<JsonTextUtf8, JsonTextUtf8, ThrowingAllocator> reader;
    rapidjson::ParseResult result =
        reader.Parse<rapidjson::kParseCommentsFlag | rapidjson::kParseInsituFlag>(stream, limiter);
    if (limiter.error() != rapidjson::kParseErrorNone) result.Set(limiter.error(), result.Offset());
    return result;
}

// The one instance of it for all sinks, because the parser is large.
extern template rapidjson::ParseResult ParseEvents(char* text, IJsonSink& sink);

// The same, with the elements of one array for their reader and all else for the document.
rapidjson::ParseResult ParseElements(char* text, Document& document, const ElementReader& elements);

}  // namespace KXP
