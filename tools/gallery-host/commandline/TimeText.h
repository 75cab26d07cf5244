// Reads times within a video.
#pragma once

#include <optional>
#include <string>

namespace host {

// Milliseconds of "90", "1.5", "1:30" or "1:02:03.5": seconds, or minutes and hours in front of seconds
// below 60. Nothing for any other text.
std::optional<double> ReadMilliseconds(const std::string& text);

}  // namespace host
