// Base64 as RFC 4648 has it.
#pragma once

#include <string>
#include <string_view>

namespace KXP {

// Strict: whole groups of four characters of the standard alphabet, with padding at the end alone and no bits
// that would be lost. False, with `bytes` unspecified, for any other text.
bool DecodeBase64(std::string_view text, std::string& bytes);

}  // namespace KXP
