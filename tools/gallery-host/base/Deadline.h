// Times at which waiting ends.
#pragma once

#include <chrono>
#include <string>

namespace host {

using Deadline = std::chrono::steady_clock::time_point;

// "30 s" or "0.25 s".
std::string Seconds(std::chrono::milliseconds time);

}  // namespace host
