// Text and its encodings. Wide text holds 32-bit characters.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace KXP {

// Byte by byte; UTF-8 beyond ASCII stays as it is in the C locale.
std::string ToLower(std::string text);

// Whether a text ends in `ending`, which is in lower case. Knows the ASCII letters alone, so that no locale
// changes the answer.
inline bool EndsIgnoringCase(std::string_view text, std::string_view ending) {
    if (text.size() < ending.size()) return false;
    text.remove_prefix(text.size() - ending.size());
    return std::equal(text.begin(), text.end(), ending.begin(), [](char c, char lower) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
    });
}

// Strict: malformed bytes, lone surrogates and values beyond U+10FFFF throw std::range_error. UTF-16 is in
// units of the machine's order, which is little-endian on every machine that the product runs on.
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);
std::u16string Utf8ToUtf16LE(std::string_view text);
std::u16string WideToUtf16LE(std::wstring_view text);
std::string Utf16LEToUtf8(std::u16string_view text);

// Whether Utf8ToWide would accept the text.
bool IsValidUtf8(std::string_view text);

// The text with U+FFFD in place of each byte that belongs to no valid sequence.
std::string ToValidUtf8(std::string_view text);

}  // namespace KXP
