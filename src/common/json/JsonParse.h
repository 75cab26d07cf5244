// The one way from JSON text to a document. RapidJSON is safe on hostile text only within limits that are
// kept here: nesting, and the digits of an exponent.
#pragma once

#include <functional>
#include <string_view>

#include "base/FileDescriptor.h"
#include "common/json/IJsonSink.h"
#include "common/json/Json.h"

namespace KXP {

// Deeper values overflow the stack of whatever walks the document later.
constexpr int kMaxJsonDepth = 512;
// The parser keeps an exponent in an int.
constexpr int kMaxExponentDigits = 9;
// A larger file is none of the product's own; reading it would only cost the client its memory.
constexpr size_t kMaxJsonFileBytes = size_t{1} << 30;

// Receives the elements of one array of the root object while the text is parsed, for arrays too large to be
// in memory twice.
struct ElementReader {
    std::string_view member;      // The array's name. Of several the first counts.
    std::function<void()> begin;  // A text begins; what was read before does not count.
    // The element goes when this returns.
    std::function<void(const Value& element)> read;
    // Tried first on a file, unless it is null: reads the elements, and the rest into a document, without the
    // parser, or returns false to leave both to it.
    std::function<bool(const FileDescriptor& file, Document& rest)> readDirectly = {};
};

// Parses UTF-8 text, with or without its byte-order mark, comments allowed, strings checked for their
// encoding. On failure the result holds the error and its byte offset, and `document` is not to be used. Text
// that breaks a limit fails with kParseErrorTermination, and any other number that no double can hold with
// kParseErrorNumberTooBig. A zero byte ends the text, as in RapidJSON.
rapidjson::ParseResult ParseJSON(std::string_view text, Document& document,
                                 const ElementReader* elements = nullptr);

// The same for a text that may be overwritten, without the copy that ParseJSON takes. A zero byte ends it at
// `size` at the latest, and is the first of kJsonTextSlack readable bytes. `document` does not need the text
// afterwards. If `elements` is set, its array is empty in `document`.
constexpr size_t kJsonTextSlack = 16;
rapidjson::ParseResult ParseJSONInPlace(char* text, size_t size, Document& document,
                                        const ElementReader* elements = nullptr);

// The same without a document, for small texts of which there are many. The strings that `sink` gets lie in
// the text. What it was passed before an error does not count.
rapidjson::ParseResult ParseJSONInPlace(char* text, size_t size, IJsonSink& sink);

}  // namespace KXP
