// Lists the files in a gallery's game folders. Opens no file and follows no link; a link to a folder counts
// as neither folder nor file.
#pragma once

#include <string>
#include <vector>

// The paths of the files in `folder`, which may be a link, in the order of the directory. Empty when it
// cannot be read. Names that are not UTF-8 are skipped with one log line.
std::vector<std::string> ScanFolder(const std::string& folder);

// The same for every folder in `gallery`, which ends in "/", except folders whose names begin with ".". Files
// in the gallery folder itself and in deeper folders are not listed.
std::vector<std::string> ScanGallery(const std::string& gallery);
