#include "plugin-modules/Gallery/src/tracker/GalleryPlace.h"

#include <algorithm>
#include <filesystem>

#include <sys/stat.h>

#include "base/Path.h"

GalleryPlace::GalleryPlace(const std::string& path) : path_(KXP::Tidied(path + "/")) {}

GalleryPlace::Kind GalleryPlace::KindOf(const std::string& path) const {
    if (path + "/" == path_ || path == KXP::ParentOf(KXP::WithoutSlash(path_))) return Kind::Gallery;
    if (path.size() <= path_.size() || path.compare(0, path_.size(), path_) != 0) return Kind::None;
    if (path[path_.size()] == '.') return Kind::None;
    switch (std::count(path.begin() + static_cast<std::ptrdiff_t>(path_.size()), path.end(), '/')) {
        case 0:
            return Kind::Game;
        case 1:
            return Kind::Capture;
        default:
            return Kind::None;
    }
}

bool GalleryPlace::Counts(const std::string& path) const {
    const std::string gallery = KXP::WithoutSlash(path_);
    return path == gallery || path.compare(0, path_.size(), path_) == 0 ||
           KXP::ParentOf(path) == KXP::ParentOf(gallery);
}

std::optional<std::string> GalleryPlace::CapturePathOf(const std::string& path) const {
    if (path.empty() || path.front() != '/' || !KXP::IsUsablePath(path)) return {};
    struct stat above {};
    struct stat root {};
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::canonical(KXP::ParentOf(path), error);
    if (error || stat(folder.parent_path().c_str(), &above) != 0 || stat(path_.c_str(), &root) != 0)
        return {};
    const std::string game = folder.filename();
    const bool inGallery = above.st_dev == root.st_dev && above.st_ino == root.st_ino;
    if (!inGallery || game.empty() || game.front() == '.') return {};
    return path_ + game + "/" + KXP::NameOf(path);
}

GalleryPlace::Folder GalleryPlace::Look() const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) return {};
    return {true, static_cast<uint64_t>(status.st_dev), status.st_ino};
}

void GalleryPlace::NoteScanned() {
    const Folder now = Look();
    const KXP::MutexLock lock(mutex_);
    scanned_ = now;
}

bool GalleryPlace::IsScanned() {
    const Folder now = Look();
    const KXP::MutexLock lock(mutex_);
    if (scanned_ && !(*scanned_ == now)) scanned_.reset();
    return scanned_.has_value();
}
