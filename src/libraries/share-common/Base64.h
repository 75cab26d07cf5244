// Base64 in the standard alphabet, with "=" at the end and no line breaks.
#pragma once

#include <string>
#include <string_view>

std::string EncodeBase64(std::string_view plain);

// Skips characters outside the alphabet; an end that is no whole byte is dropped. Empty for texts of 2 GiB
// and more.
std::string DecodeBase64(std::string_view code);
