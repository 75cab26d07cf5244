// Text from outside made fit for a terminal. File names, log lines and answers may hold anything, escape
// sequences and characters that turn the writing direction included.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text with what could steer a terminal written as "\x1b" or "\u202e", and bytes that are no UTF-8 as
// "\xff". What is left fits one line.
std::string Printable(std::string_view text);

// Columns that a Printable text takes on a terminal.
size_t DisplayWidth(std::string_view printable);

// JSON text with the same characters as JSON escapes, so that it means what it meant.
std::string PrintableJson(std::string_view json);

bool IsUtf8(std::string_view text);

}  // namespace host
