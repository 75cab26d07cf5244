// Base64 in the standard alphabet (RFC 4648), with "=" at the end and no line breaks. Texts of 1 GiB and more
// throw std::length_error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace KXP {

std::string EncodeBase64(std::string_view bytes);
// The same into memory of the caller's, of Base64Length(bytes.size()) characters.
void EncodeBase64(std::string_view bytes, char* text);
constexpr size_t Base64Length(size_t bytes) {
    return (bytes + 2) / 3 * 4;
}

// Strict: accepts what EncodeBase64 returns and nothing else. False, with `bytes` unspecified, for any other
// text.
bool DecodeBase64(std::string_view text, std::string& bytes);

// Skips characters outside the alphabet; an end that is no whole byte is dropped.
std::string DecodeBase64Loosely(std::string_view text);

}  // namespace KXP
