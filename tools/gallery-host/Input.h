// Standard input and files that the user names.
#pragma once

#include <string>

#include "gallery-host/Interrupt.h"

namespace host {

// What one line, one payload or one file may hold.
constexpr size_t kMaxInputBytes = size_t{64} << 20;

// Reads what is there of standard input, some at most, into `bytes`. False at its end. Throws Failure.
bool ReadSome(std::string& bytes);

// All of standard input. Throws Failure when it cannot be read or is too long, and when interrupted.
std::string ReadStandardInput(Interrupt& interrupt);

// A whole file. Throws Failure(kExitUsage) when it cannot be read or is too long.
std::string ReadFile(const std::string& path);

}  // namespace host
