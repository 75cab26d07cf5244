// Standard input and files that the user names.
#pragma once

#include <string>

#include "gallery-host/base/Interrupt.h"

namespace host {

// What one line, one payload or one file may hold.
constexpr size_t kMaxInputBytes = size_t{64} << 20;

// Reads what is there, some at most, into `bytes`. False at the end. Throws Failure; `name` is for its text.
bool ReadSome(int descriptor, const std::string& name, std::string& bytes);

// All there is, waiting for it. Throws Failure when it cannot be read or is too long, and when interrupted.
std::string ReadAll(int descriptor, const std::string& name, Interrupt& interrupt);

// A whole file, or what comes through a pipe. Throws Failure as above, and when it cannot be opened.
std::string ReadFile(const std::string& path, Interrupt& interrupt);

constexpr const char* kStandardInput = "standard input";

}  // namespace host
