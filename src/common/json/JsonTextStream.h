// The text that the parser reads, which it changes in place; RapidJSON's reader finds these by their types.
// The reader of the tracker's own layout passes over strings in the same way.
#pragma once

#include "base/Words.h"
#include "common/json/Json.h"

namespace KXP {

// Marks by its high bit the first byte of a little-endian word that is a quote, a backslash, a control
// character or beyond ASCII, and perhaps some bytes after it. 0 when there is none.
inline Word SpecialBytes(Word word) {
    return ((word | (word - kEachByte * 0x20)) & (kEachByte * 0x80)) | BytesOf<'"', '\\'>(word);
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
        at_ += FirstMark(special);
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
