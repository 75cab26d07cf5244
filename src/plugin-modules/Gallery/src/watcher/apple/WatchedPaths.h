// Which events concern the gallery, and the tracker's spelling of their paths.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace watcher {

// The system reports real paths. The watched folder, the gallery in it and the folders that they lie in may
// be links, and the tracker knows its files by paths that lead through them.
class WatchedPaths {
  public:
    // `gallery` is `folder` or in it. Links are followed as they lead now.
    WatchedPaths(const std::string& folder, const std::string& gallery);

    // The folders to have events of.
    std::vector<std::string> RealFolders() const;

    // The tracker's spelling of a real path; no value for what the tracker has no use for: what is below the
    // folders beside the gallery, and outside both folders.
    std::optional<std::string> Spelled(const std::string& real) const;

    // The two folders themselves may be links; what they lead to counts.
    bool IsNamed(const std::string& path) const { return path == folder_ || path == gallery_; }
    // Whether all that is known of the gallery is in doubt when events of this real path, and of what is
    // below it, were lost.
    bool CoversGallery(const std::string& real) const;
    const std::string& gallery() const { return gallery_; }

  private:
    const std::string folder_;
    const std::string gallery_;
    const std::string realFolder_;
    const std::string realGallery_;
};

}  // namespace watcher
