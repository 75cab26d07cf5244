#include "base/Path.h"

#include "base/Text.h"

namespace KXP {

bool IsUsablePath(std::string_view path) {
    return path.find('\0') == std::string_view::npos;
}

std::string WithoutSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string NameOf(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string ParentOf(std::string_view path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return slash == 0 ? "/" : std::string(path.substr(0, slash));
}

std::string LowerExtension(std::string_view path) {
    const std::string name = NameOf(path);
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? "" : ToLower(name.substr(dot));
}

}  // namespace KXP
