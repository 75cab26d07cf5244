// The stamps of the captures on record, in a file beside the tracker's file. By its header that file is
// recognised as the one that the product wrote last, and its records as true for all captures whose stamps
// are still the same.
//
// Integers of 64 bits, little-endian: the header (magic and version, then size, seconds, nanoseconds and
// inode of the tracker's file, and the number of entries), and for each record in the order of the tracker's
// file the size, the time in ns and the inode of its capture.
//
// A cache without locks or durability: a kill or a loss of power in the middle leaves a file that Read
// refuses.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/json/JSONFile.h"
#include "plugin-modules/Gallery/src/tracker/record/FileStamp.h"

class StampFile {
  public:
    // The file for the tracker file at `trackerFile`: its path with ".stamps" in place of ".json".
    static std::string PathFor(const std::string& trackerFile);
    // Names the file; creates nothing.
    void Init(const std::string& trackerFile) { path_ = PathFor(trackerFile); }
    const std::string& path() const { return path_; }

    // The tracker file, which is `of` now, holds these stamps from `firstIndex` on; those before are in this
    // file. After a failure, which is logged once, Read refuses the file until all stamps are written again.
    void Write(const KXP::JSONFile::Stamp& of, size_t firstIndex, const std::vector<FileStamp>& stamps);
    // One stamp for each record; none unless the last Write was for this tracker file. Its device is not
    // compared, because a volume may get another one with each mount.
    std::optional<std::vector<FileStamp>> Read(const KXP::JSONFile::Stamp& of) const;

    // Follows the tracker file to its new name.
    void MoveTo(const std::string& trackerFile);
    // Deletes the file if there is one.
    void Remove() const;

  private:
    bool WriteEntries(const KXP::JSONFile::Stamp& of, size_t firstIndex, std::string_view entries) const;

    std::string path_;
    bool failed_ = false;
};
