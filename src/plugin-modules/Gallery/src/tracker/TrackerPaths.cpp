#include "plugin-modules/Gallery/src/tracker/TrackerPaths.h"

#include <filesystem>

#include <sys/stat.h>

std::optional<std::string> CapturePathOf(const std::string& path, const std::string& gallery) {
    // The system would take the text before a zero byte, which is another file.
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos) return {};
    struct stat above {};
    struct stat root {};
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(ParentOf(path), error);
    if (error || stat(folder.parent_path().c_str(), &above) != 0 || stat(gallery.c_str(), &root) != 0)
        return {};
    const std::string game = folder.filename();
    const bool inGallery = above.st_dev == root.st_dev && above.st_ino == root.st_ino;
    if (!inGallery || game.empty() || game.front() == '.') return {};
    return gallery + game + "/" + NameOf(path);
}
