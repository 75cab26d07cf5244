// Which game a recording shows, by where it lies and what it is called.
#pragma once

#include <string>

namespace importing {

// The game where nothing says which.
inline constexpr const char* kOtherGame = "Other";

// The name of the folder, unless it is one that recorders and desktops make; else the file's name up to its
// date, less words such as "Screenshot"; else kOtherGame. `path` is absolute.
std::string GameOf(const std::string& path);

}  // namespace importing
