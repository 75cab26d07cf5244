// Lists the files in a gallery's game folders. Opens no file and follows no link: links are neither files nor
// folders of games.
#pragma once

#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/media/FolderCrc.h"
#include "plugin-modules/Gallery/src/tracker/record/FileStamp.h"

struct FoundFile {
    std::string path;
    FileStamp stamp;  // unknown where the file could not be looked at
};

struct FoundFiles {
    std::vector<FoundFile> files;     // in the order of the directory
    std::vector<std::string> unread;  // folders whose files are not, or not all, among these: reading failed
};

// The regular files in `folder`. Nothing when there is no such folder or a link. Names that are not UTF-8 are
// skipped with one log line.
FoundFiles ScanFolder(const std::string& folder);

// The same for every folder in `gallery`, which ends in "/" and may be a link, except folders whose names
// begin with ".". Files in the gallery folder itself and in deeper folders are not listed.
FoundFiles ScanGallery(const std::string& gallery);

// The same for a gallery that was walked for its sum just now, if all names in it are legible.
FoundFiles FilesSeen(const media::SeenFiles& seen);
