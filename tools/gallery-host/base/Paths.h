// The paths that users write, as messages carry them.
#pragma once

#include <chrono>
#include <string>

namespace host {

// An absolute path, whether or not there is anything. Throws Failure(kExitFailed) for a name that no message
// can carry.
std::string AbsolutePath(const std::string& path);

// The absolute path of a folder that exists and can be read. Throws Failure(kExitFailed).
std::string FolderPath(const std::string& path);

bool IsFolder(const std::string& path);

// What a request that copies the file may take beside what any may: its bytes on a slow disk, 10 MB a second.
std::chrono::milliseconds TimeToCopy(const std::string& path);

// Why the plug-in did not take a file, which says the same of one that is not there: "No such file or
// directory", "is a folder", or `otherwise`.
std::string WhyNot(const std::string& path, const std::string& otherwise);

}  // namespace host
