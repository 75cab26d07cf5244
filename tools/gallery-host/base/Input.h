// Standard input and files that the user names.
#pragma once

#include <string>

#include "gallery-host/base/Interrupt.h"

namespace host {

// The longest line, payload or file that is read.
constexpr size_t kMaxInputBytes = size_t{64} << 20;

// Reads what is available, up to 64 KiB, into `bytes`. False at the end. Throws Failure, whose text has
// `name`.
bool ReadSome(int descriptor, const std::string& name, std::string& bytes);

// Reads to the end. Throws Failure when that fails or is too long, and when interrupted.
std::string ReadAll(int descriptor, const std::string& name, Interrupt& interrupt);

// Reads a whole file or pipe. Throws Failure as above, and when it cannot be opened.
std::string ReadFile(const std::string& path, Interrupt& interrupt);

constexpr const char* kStandardInput = "standard input";

}  // namespace host
