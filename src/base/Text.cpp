#include "base/Text.h"

#include <cctype>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace KXP {
namespace {

static_assert(sizeof(wchar_t) == 4, "wide text is UTF-32");

constexpr char32_t kLastCodePoint = 0x10FFFF;

bool IsSurrogate(char32_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

// The length of a sequence by its first byte, 0 for a byte that begins none.
size_t SequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

// Takes one character off the front of the text; takes nothing when the bytes are no UTF-8.
std::optional<char32_t> TakeUtf8(std::string_view& text) {
    static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text.front());
    const size_t length = SequenceLength(lead);
    if (length == 0 || length > text.size()) return {};
    char32_t c = length == 1 ? lead : lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return {};
        c = (c << 6) | (next & 0x3Fu);
    }
    if (c < kSmallest[length] || c > kLastCodePoint || IsSurrogate(c)) return {};
    text.remove_prefix(length);
    return c;
}

char32_t NextFrom(std::string_view& text) {
    const std::optional<char32_t> c = TakeUtf8(text);
    if (!c) throw std::range_error("unable to convert encoding");
    return *c;
}

char32_t NextFrom(std::wstring_view& text) {
    const auto c = static_cast<char32_t>(text.front());
    if (c > kLastCodePoint || IsSurrogate(c)) throw std::range_error("invalid encoding");
    text.remove_prefix(1);
    return c;
}

char32_t NextFrom(std::u16string_view& text) {
    const char32_t first = text.front();
    text.remove_prefix(1);
    if (!IsSurrogate(first)) return first;
    if (first >= 0xDC00 || text.empty() || text.front() < 0xDC00 || text.front() > 0xDFFF)
        throw std::range_error("invalid encoding");
    const char32_t second = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void Append(std::wstring& text, char32_t c) {
    text.push_back(static_cast<wchar_t>(c));
}

void Append(std::u16string& text, char32_t c) {
    if (c < 0x10000) {
        text.push_back(static_cast<char16_t>(c));
        return;
    }
    text.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
}

void Append(std::string& text, char32_t c) {
    if (c < 0x80) {
        text.push_back(static_cast<char>(c));
        return;
    }
    const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    const unsigned leadBits = 0xFF00u >> (following + 1);
    text.push_back(static_cast<char>(leadBits | (c >> (6 * following))));
    for (int i = following - 1; i >= 0; --i)
        text.push_back(static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F)));
}

template <typename To, typename From>
To Convert(From text) {
    To converted;
    converted.reserve(text.size());
    while (!text.empty())
        Append(converted, NextFrom(text));
    return converted;
}

}  // namespace

std::string ToLower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::wstring Utf8ToWide(std::string_view text) {
    return Convert<std::wstring>(text);
}

std::string WideToUtf8(std::wstring_view text) {
    return Convert<std::string>(text);
}

std::u16string Utf8ToUtf16LE(std::string_view text) {
    return Convert<std::u16string>(text);
}

std::u16string WideToUtf16LE(std::wstring_view text) {
    return Convert<std::u16string>(text);
}

std::string Utf16LEToUtf8(std::u16string_view text) {
    return Convert<std::string>(text);
}

bool IsValidUtf8(std::string_view text) {
    while (!text.empty()) {
        // Most text is ASCII, and some of it is megabytes of JSON or a name in each of a thousand records.
        uint64_t eight = 0;
        if (text.size() >= sizeof eight) {
            std::memcpy(&eight, text.data(), sizeof eight);
            if ((eight & 0x8080808080808080) == 0) {
                text.remove_prefix(sizeof eight);
                continue;
            }
        }
        if (static_cast<unsigned char>(text.front()) < 0x80) {
            text.remove_prefix(1);
            continue;
        }
        if (!TakeUtf8(text)) return false;
    }
    return true;
}

std::string ToValidUtf8(std::string_view text) {
    if (IsValidUtf8(text)) return std::string(text);
    std::string valid;
    while (!text.empty()) {
        const std::string_view before = text;
        if (TakeUtf8(text)) {
            valid += before.substr(0, before.size() - text.size());
        } else {
            Append(valid, U'\uFFFD');
            text.remove_prefix(1);
        }
    }
    return valid;
}

}  // namespace KXP
