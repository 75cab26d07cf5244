// Where the gallery is, which paths in it can be those of captures (gallery/game/file, and nothing else), and
// whether the folder there is still the one that the record is of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/threads/Mutex.h"

// Any thread. Its mutex may be taken under the tracker's.
class GalleryPlace {
  public:
    enum class Kind {
        Gallery,  // the gallery, or the folder that it lies in
        Game,     // a folder of captures
        Capture,
        None,  // whatever is there, it is neither: hidden, deeper, elsewhere, or in the gallery folder itself
    };

    explicit GalleryPlace(const std::string& path);

    // Without doubled slashes and "." parts; ends in "/".
    const std::string& path() const { return path_; }
    // By the text alone, for paths that begin like path(). A game and a file in the gallery folder itself
    // look the same.
    Kind KindOf(const std::string& path) const;
    // Whether the path lies in the gallery or in the folder above it, which both count in the gallery's sum.
    bool Counts(const std::string& path) const;
    // The one path under which the capture at `path` is on record. The folder of `path` has to exist; device
    // and inode decide whether it is a game's folder, so the gallery may be reached by a link. No value for a
    // file that is never on record.
    std::optional<std::string> CapturePathOf(const std::string& path) const;

    // The record is of the folder that is there now.
    void NoteScanned() EXCLUDES(mutex_);
    // Whether that folder is still there, and was whenever this was asked. Another one may be: an unplugged
    // drive leaves the folder that it was mounted on, and comes back before anybody has noticed.
    bool IsScanned() EXCLUDES(mutex_);

  private:
    struct Folder {
        bool exists = false;
        uint64_t volume = 0;
        uint64_t inode = 0;
        bool operator==(const Folder& other) const {
            return exists == other.exists && volume == other.volume && inode == other.inode;
        }
    };
    Folder Look() const;

    const std::string path_;
    mutable KXP::Mutex mutex_;
    std::optional<Folder> scanned_ GUARDED_BY(mutex_);
};
