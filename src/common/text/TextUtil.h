// Splitting and comparing text, and GUIDs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Text.h"

namespace KXP {

// Splits at each whole `delimiter` and keeps empty pieces: "a//b" at "/" becomes "a", "", "b". An empty
// delimiter throws Exception 0x80070057.
std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter);

// The same by lines: a delimiter at the end makes no empty last piece, and empty text makes no piece at all.
std::vector<std::string> SplitString(const std::string& text, char delimiter);

bool StringEndsWith(std::string_view text, std::string_view ending);

// A new GUID: 36 characters, upper case. The second form takes no memory.
constexpr size_t kGuidLength = 36;
std::string GenerateGUID();
void GenerateGUID(char (&text)[kGuidLength + 1]);

}  // namespace KXP
