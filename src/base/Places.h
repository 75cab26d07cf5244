// The product's places on disk that the utility library and the libraries above it must agree on;
// common/product/Profile.h has the rest. Paths are UTF-8 without a "/" at the end. Every call may be made
// from any thread.
#pragma once

#include <string>

namespace KXP {

// The product's folder beneath one of the user's.
constexpr const char* kProductFolder = "/ZORVEX/OvirastreamX";

// The folder in the product's application data for the files of its sharing features.
constexpr const char* kShareFolder = "Share";

// The name under which the loader knows the shared library (or program) that this code is linked into; empty
// when it knows none.
std::string LoadedLibraryName();

// The same as a whole real path; throws std::runtime_error when there is no such name. GetLibraryPath returns
// its folder.
std::string GetLibraryFilePath();
std::string GetLibraryPath();

// The user's folders, which need not exist: application data, caches, home, and settings.
namespace Platform {
std::string AppSupportFolder();
std::string CacheFolder();
std::string HomeFolder();
std::string LibraryFolder();
}  // namespace Platform

}  // namespace KXP
