// What lies in a gallery: the files of its game folders. Names alone, no file is opened and no link followed;
// a link to a folder is neither folder nor file.
#pragma once

#include <string>
#include <vector>

// The paths of all files, in the order that the folder gives them. Nothing for a folder that
// cannot be read. Names that are not UTF-8 are passed over, which is logged once.
std::vector<std::string> ScanFolder(const std::string& folder);

// The same for every folder directly in `gallery`, which ends in "/", but for those whose names begin with
// ".". Files in the gallery itself and deeper ones are none of it.
std::vector<std::string> ScanGallery(const std::string& gallery);
