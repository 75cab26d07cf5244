// Makes text from outside safe for a terminal. File names, log lines and answers may contain escape sequences
// and characters that change the writing direction.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text on one line, with control characters written as "\x1b" or "\u202e" and bytes that are not UTF-8 as
// "\xff".
std::string Printable(std::string_view text);

// Columns that a Printable text takes on a terminal.
size_t DisplayWidth(std::string_view printable);

// JSON text with the same characters as JSON escapes, which keeps its meaning.
std::string PrintableJson(std::string_view json);

bool IsUtf8(std::string_view text);

}  // namespace host
