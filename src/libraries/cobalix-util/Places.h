// Where the product's files lie, as far as this library and those above it must agree on it. A static library
// of its own, linked by each of them; common/Profile.h has the rest. Paths are UTF-8 without a "/" at the
// end. Every call may be made from any thread.
#pragma once

#include <string>

namespace KXP {

// The product's folder beneath one of the user's.
constexpr const char* kProductFolder = "/ZORVEX/OvirastreamX";

// The name under which the loader knows the shared library (or program) that this code is linked into; empty
// when it does not.
std::string LoadedLibraryName();

// The same as a whole real path; throws std::runtime_error when it cannot be told. GetLibraryPath is its
// folder.
std::string GetLibraryFilePath();
std::string GetLibraryPath();

std::string WithoutEndingSlash(std::string folder);

// The user's folders, which need not exist: application data, home, and settings.
namespace Platform {
std::string AppSupportFolder();
std::string HomeFolder();
std::string LibraryFolder();
}  // namespace Platform

}  // namespace KXP
