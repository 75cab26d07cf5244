#include "gallery-host/base/Printable.h"

#include <cstdint>

#include "gallery-host/base/Columns.h"

namespace host {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

// Removes one character from the front. An invalid byte is removed alone and returned as kInvalid.
char32_t TakeCharacter(std::string_view& text) {
    const auto byte = [&text](size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(0);
    size_t length = 1;
    char32_t value = first;
    char32_t least = 0;
    if (first >= 0xF0 && first <= 0xF4) {
        length = 4, value = first & 0x07u, least = 0x10000;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3, value = first & 0x0Fu, least = 0x800;
    } else if (first >= 0xC2 && first < 0xE0) {
        length = 2, value = first & 0x1Fu, least = 0x80;
    } else if (first >= 0x80) {
        value = kInvalid;
    }
    bool valid = value != kInvalid && length <= text.size();
    for (size_t at = 1; valid && at < length; ++at) {
        valid = (byte(at) & 0xC0u) == 0x80;
        value = value << 6 | (byte(at) & 0x3Fu);
    }
    const bool surrogate = value >= 0xD800 && value < 0xE000;
    if (!valid || value < least || surrogate || value > 0x10FFFF) {
        text.remove_prefix(1);
        return kInvalid;
    }
    text.remove_prefix(length);
    return value;
}

// Control characters of both blocks, and the invisible ones that end lines or reorder text.
bool Steers(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x206F) || c == 0xFEFF ||
           (c >= 0xFFF9 && c <= 0xFFFB) || (c >= 0xE0000 && c <= 0xE007F);
}

// A backslash, a letter and hexadecimal digits.
std::string Escape(char letter, uint32_t value, int digits) {
    std::string text = {'\\', letter};
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        text += "0123456789abcdef"[value >> shift & 0xF];
    return text;
}

std::string TextEscape(char32_t c) {
    if (c < 0x100) return Escape('x', c, 2);
    return c < 0x10000 ? Escape('u', c, 4) : Escape('U', c, 8);
}

std::string JsonEscape(char32_t c) {
    if (c < 0x10000) return Escape('u', c, 4);
    const char32_t rest = c - 0x10000;
    return Escape('u', 0xD800 + (rest >> 10), 4) + Escape('u', 0xDC00 + (rest & 0x3FF), 4);
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t c = TakeCharacter(text);
        if (c == kInvalid)
            out += Escape('x', static_cast<unsigned char>(before[0]), 2);
        else if (Steers(c))
            out += TextEscape(c);
        else
            out += before.substr(0, before.size() - text.size());
    }
    return out;
}

size_t DisplayWidth(std::string_view printable) {
    size_t width = 0;
    while (!printable.empty()) {
        const int columns = Platform::ColumnsOf(TakeCharacter(printable));
        width += columns < 0 ? 1 : static_cast<size_t>(columns);
    }
    return width;
}

std::string PrintableJson(std::string_view json) {
    std::string out;
    while (!json.empty()) {
        const std::string_view before = json;
        const char32_t c = TakeCharacter(json);
        // Line ends and tabs are the layout's; inside a string they are escapes already.
        if (c >= 0x7F && c != kInvalid && Steers(c))
            out += JsonEscape(c);
        else
            out += before.substr(0, before.size() - json.size());
    }
    return out;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty())
        if (TakeCharacter(text) == kInvalid) return false;
    return true;
}

}  // namespace host
