#include "plugin-modules/Gallery/src/tracker/CapturePath.h"

#include <filesystem>

#include <sys/stat.h>

#include "base/Path.h"

std::optional<std::string> CapturePathOf(const std::string& path, const std::string& gallery) {
    if (path.empty() || path.front() != '/' || !KXP::IsUsablePath(path)) return {};
    struct stat above {};
    struct stat root {};
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(KXP::ParentOf(path), error);
    if (error || stat(folder.parent_path().c_str(), &above) != 0 || stat(gallery.c_str(), &root) != 0)
        return {};
    const std::string game = folder.filename();
    const bool inGallery = above.st_dev == root.st_dev && above.st_ino == root.st_ino;
    if (!inGallery || game.empty() || game.front() == '.') return {};
    return gallery + game + "/" + KXP::NameOf(path);
}
