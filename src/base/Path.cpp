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

std::string Tidied(std::string_view path) {
    std::string tidied;
    for (size_t at = 0; at <= path.size();) {
        const size_t slash = path.find('/', at);
        const size_t end = slash == std::string_view::npos ? path.size() : slash;
        const std::string_view part = path.substr(at, end - at);
        const bool isLast = end == path.size();
        if (!part.empty() && part != ".") {
            tidied += part;
            if (!isLast) tidied += '/';
        } else if (at == 0 && !isLast && part.empty()) {
            tidied += '/';
        }
        at = end + 1;
    }
    return tidied;
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
