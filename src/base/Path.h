// Parts of a path. "/" alone separates them, whatever a name holds.
#pragma once

#include <string>
#include <string_view>

namespace KXP {

// False for a path with a zero byte in it: the system would read the text before that byte, which names
// another file.
bool IsUsablePath(std::string_view path);

// The path without the slashes at its end; "/" stays.
std::string WithoutSlash(std::string path);

// The path without doubled slashes and "." parts. ".." stays: what it leads to is the system's to say.
std::string Tidied(std::string_view path);

// The text after the last "/".
std::string NameOf(std::string_view path);

// The folder that the path lies in: "/" for what lies in the root, "." for a bare name.
std::string ParentOf(std::string_view path);

// The end of the name from its last "." on, in lower case: ".mp4"; empty without a dot.
std::string LowerExtension(std::string_view path);

}  // namespace KXP
