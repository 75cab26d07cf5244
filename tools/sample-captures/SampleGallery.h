// A small gallery of captures of every kind, and of files that are none.
#pragma once

#include <string>
#include <vector>

namespace samples {

struct SampleFile {
    std::string relativePath;  // ending in "/": a folder without files
    std::string bytes;
    std::string note;  // what the file is, in a few words
};

// Files in the gallery's top folder and in folders of games, under 1 MB in all; the same on every call.
std::vector<SampleFile> MakeSampleGallery();

// Writes these files below `folder`, which is made if need be. Their modification times are fixed, a minute
// apart in the order of MakeSampleGallery. Throws std::runtime_error on failure; a file that is there already
// is one, so nothing is ever overwritten.
void WriteSampleGallery(const std::string& folder);

}  // namespace samples
