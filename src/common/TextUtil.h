// Splitting and comparing text, conversion between encodings, and GUIDs. Wide text is 32-bit characters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace KXP {

// Splits at each whole `delimiter` and keeps empty pieces: "a//b" at "/" gives "a", "", "b". An empty
// delimiter throws Exception 0x80070057.
std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter);

// The same by lines: a delimiter at the end gives no empty last piece, and empty text gives no piece at all.
std::vector<std::string> SplitString(const std::string& text, char delimiter);

bool StringEndsWith(std::string_view text, std::string_view ending);

// Byte by byte; UTF-8 beyond ASCII stays as it is in the C locale.
std::string ToLower(std::string text);

// Strict: malformed bytes, lone surrogates and values beyond U+10FFFF throw std::range_error. UTF-16 is in
// units of the machine's order, which is little-endian on every machine that the product runs on.
std::wstring Utf8ToWide(std::string_view text);
std::string WideToUtf8(std::wstring_view text);
std::u16string Utf8ToUtf16LE(std::string_view text);
std::u16string WideToUtf16LE(std::wstring_view text);
std::string Utf16LEToUtf8(std::u16string_view text);

// Whether Utf8ToWide would take the text.
bool IsValidUtf8(std::string_view text);

// The text with U+FFFD in the place of each byte that is no part of a valid sequence.
std::string ToValidUtf8(std::string_view text);

// A new GUID: 36 characters, upper case.
std::string GenerateGUID();

}  // namespace KXP
