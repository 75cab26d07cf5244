#include <algorithm>
#include <cstring>

#include "base/Words.h"
#include "common/json/Json.h"

namespace {

using KXP::Word;

// Marks what has to be escaped, and perhaps some bytes after it.
Word EscapedBytes(Word word) {
    return KXP::ZeroBytes(word & (KXP::kEachByte * 0xE0)) | KXP::BytesOf<'"', '\\'>(word);
}

bool IsEscaped(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

// The last bytes of a text of four characters or more, eight or, with some of them twice, all.
Word LastBytes(const char* text, size_t length) {
    if (length >= sizeof(Word)) return KXP::LoadWord(text + length - sizeof(Word));
    uint32_t first = 0;
    uint32_t last = 0;
    std::memcpy(&first, text, sizeof first);
    std::memcpy(&last, text + length - sizeof last, sizeof last);
    return Word{first} << 32 | last;
}

// How many characters at the start of a text can be written as they are; perhaps less than all of them.
size_t PlainPrefix(const char* text, size_t length) {
    size_t plain = 0;
    while (length - plain >= sizeof(Word)) {
        if (EscapedBytes(KXP::LoadWord(text + plain)) != 0) return plain;
        plain += sizeof(Word);
    }
    if (length >= sizeof(uint32_t) && EscapedBytes(LastBytes(text, length)) == 0) return length;
    while (plain < length && !IsEscaped(text[plain]))
        ++plain;
    return plain;
}

}  // namespace

template <>
bool KXP::PlainJsonWriter::ScanWriteUnescapedString(rapidjson::GenericStringStream<KXP::Utf8>& text,
                                                    size_t length) {
    const size_t plain = PlainPrefix(text.src_, length - text.Tell());
    if (plain > 0) std::memcpy(os_->PushUnsafe(plain), text.src_, plain);
    text.src_ += plain;
    return text.Tell() < length;
}

bool KXP::JsonWriter::String(const char* text, rapidjson::SizeType size, bool copy) {
    if (PlainPrefix(text, size) != size) return PlainJsonWriter::String(text, size, copy);
    Prefix(rapidjson::kStringType);
    char* const to = os_->Push(size + 2);
    to[0] = '"';
    std::copy(text, text + size, to + 1);
    to[size + 1] = '"';
    return EndValue(true);
}
