// Base64 in the standard alphabet (RFC 4648), with "=" at the end and no line breaks. Texts of 1 GiB and more
// throw std::length_error.
#pragma once

#include <string>
#include <string_view>

namespace KXP {

std::string EncodeBase64(std::string_view bytes);

// Strict: accepts what EncodeBase64 returns and nothing else. False, with `bytes` unspecified, for any other
// text.
bool DecodeBase64(std::string_view text, std::string& bytes);

// Skips characters outside the alphabet; an end that is no whole byte is dropped.
std::string DecodeBase64Loosely(std::string_view text);

}  // namespace KXP
