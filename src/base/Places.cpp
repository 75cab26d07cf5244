#include "base/Places.h"

#include <climits>
#include <cstdlib>
#include <stdexcept>

#include <dlfcn.h>

namespace KXP {

std::string LoadedLibraryName() {
    // The address of something static, which no other library that links this code can replace.
    static const char anchor = 0;
    Dl_info info{};
    if (dladdr(&anchor, &info) == 0 || !info.dli_fname) return "";
    return info.dli_fname;
}

std::string GetLibraryFilePath() {
    const std::string name = LoadedLibraryName();
    if (name.empty()) throw std::runtime_error("dladdr failed");
    char resolved[PATH_MAX];
    // A library that was replaced while it runs has no real path any more; its old one still names the
    // folder.
    return realpath(name.c_str(), resolved) ? resolved : name;
}

std::string GetLibraryPath() {
    const std::string path = GetLibraryFilePath();
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

}  // namespace KXP
