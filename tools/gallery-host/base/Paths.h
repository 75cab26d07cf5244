// Turns paths that users write into paths that messages carry.
#pragma once

#include <chrono>
#include <string>

namespace host {

// The absolute path, whether or not the file exists. Throws Failure(kExitFailed) for a name that is not
// UTF-8, which no message can carry.
std::string AbsolutePath(const std::string& path);

// The absolute path of a folder that exists and can be read. Throws Failure(kExitFailed).
std::string FolderPath(const std::string& path);

// A path below the product's folder of contents, such as "Resources/page".
std::string InProduct(const std::string& path);

bool IsFolder(const std::string& path);

// How much longer than others a request that copies the file may take: its size at 10 MB a second, a slow
// disk.
std::chrono::milliseconds TimeToCopy(const std::string& path);

// Why the plug-in refused a file; its own answer does not distinguish a missing file. "No such file or
// directory", "is a folder", or `otherwise`.
std::string WhyNot(const std::string& path, const std::string& otherwise);

}  // namespace host
