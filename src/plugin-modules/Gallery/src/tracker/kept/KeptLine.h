// One line of the file of kept facts, a JSON object; docs/tracker-file.md describes it.
#pragma once

#include <cstddef>
#include <string>

#include "plugin-modules/Gallery/src/tracker/kept/KeptCapture.h"

// With the line feed at its end. A longer line is not read again.
constexpr size_t kMaxKeptLine = size_t{64} << 10;

// With a line feed. Bytes that are not UTF-8 become U+FFFD.
std::string WriteKeptLine(const KeptCapture& capture);

// False when the line is damaged. A zero byte ends the line at `size` at the latest and is the first of
// KXP::kJsonTextSlack readable bytes; the line is overwritten.
bool ReadKeptLine(char* line, size_t size, KeptCapture& capture);
