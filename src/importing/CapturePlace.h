// Where the capture of a source goes in the gallery.
#pragma once

#include <string>
#include <vector>

#include "importing/ImportSource.h"

namespace importing {

// Whether a file's ending is one of pictures and videos that can be imported.
bool HasMediaEnding(const std::string& path);

// The path of the capture if nothing has that name yet. Throws ImportError for a name that the gallery does
// not show.
std::string PlaceOf(const ImportSource& source, const std::string& gallery, const std::string& game);

// The first of the place and of places with a number after its name that is free, and those before it, which
// are taken.
struct FreePlace {
    std::string path;
    std::vector<std::string> taken;
};
FreePlace FindFreePlace(const std::string& place);

}  // namespace importing
