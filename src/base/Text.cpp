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

}  // namespace

std::string ToLower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::wstring Utf8ToWide(std::string_view text) {
    std::wstring wide;
    wide.reserve(text.size());
    while (!text.empty()) {
        const std::optional<char32_t> c = TakeUtf8(text);
        if (!c) throw std::range_error("unable to convert encoding");
        wide.push_back(static_cast<wchar_t>(*c));
    }
    return wide;
}

std::string WideToUtf8(std::wstring_view text) {
    std::string utf8;
    utf8.reserve(text.size());
    for (const wchar_t wide : text) {
        const auto c = static_cast<char32_t>(wide);
        if (c > kLastCodePoint || IsSurrogate(c)) throw std::range_error("invalid encoding");
        Append(utf8, c);
    }
    return utf8;
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
