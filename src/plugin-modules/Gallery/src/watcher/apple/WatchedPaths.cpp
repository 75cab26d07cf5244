#include "plugin-modules/Gallery/src/watcher/apple/WatchedPaths.h"

#include <string_view>

#include <fcntl.h>

#include "base/FileCalls.h"
#include "base/FileDescriptor.h"
#include "base/Path.h"

namespace watcher {
namespace {

// Of a folder that is not there, the real path of the nearest one around it that is, and the rest.
std::string RealPath(const std::string& path) {
    const KXP::FileDescriptor folder(open(path.c_str(), KXP::Platform::kFolderForLookup | O_CLOEXEC));
    std::string real = folder.IsOpen() ? KXP::Platform::PathOf(folder.get()) : "";
    const std::string around = KXP::ParentOf(path);
    if (!real.empty() || around == path || around == ".") return real.empty() ? path : real;
    return KXP::WithoutSlash(RealPath(around) + "/" + KXP::NameOf(path));
}

// What follows the folder in the path, from its slash on; no value for a path that is not in the folder.
std::optional<std::string_view> Within(std::string_view path, std::string_view folder) {
    if (folder == "/") folder = {};
    if (path.substr(0, folder.size()) != folder) return std::nullopt;
    const std::string_view rest = path.substr(folder.size());
    if (!rest.empty() && rest[0] != '/') return std::nullopt;
    return rest;
}

std::string Join(const std::string& folder, std::string_view rest) {
    return std::string(folder == "/" && !rest.empty() ? "" : folder).append(rest);
}

}  // namespace

WatchedPaths::WatchedPaths(const std::string& folder, const std::string& gallery)
    : folder_(KXP::WithoutSlash(folder)),
      gallery_(gallery.empty() ? folder_ : KXP::WithoutSlash(gallery)),
      realFolder_(RealPath(folder_)),
      realGallery_(RealPath(gallery_)) {}

std::vector<std::string> WatchedPaths::RealFolders() const {
    if (Within(realGallery_, realFolder_)) return {realFolder_};
    return {realFolder_, realGallery_};
}

std::optional<std::string> WatchedPaths::Spelled(const std::string& real) const {
    if (const auto rest = Within(real, realGallery_)) return Join(gallery_, *rest);
    const auto rest = Within(real, realFolder_);
    if (!rest || rest->find('/', 1) != rest->npos) return std::nullopt;
    return Join(folder_, *rest);
}

bool WatchedPaths::CoversGallery(const std::string& real) const {
    return Within(realGallery_, real) || Within(real, realGallery_);
}

}  // namespace watcher
