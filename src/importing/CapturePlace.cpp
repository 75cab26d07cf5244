#include "importing/CapturePlace.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <string_view>

#include <sys/stat.h>

#include "base/Text.h"

namespace importing {
namespace {

namespace fs = std::filesystem;

constexpr int kMostPlaces = 10000;

}  // namespace

bool HasMediaEnding(const std::string& path) {
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::string_view kEndings[] = {".apng", ".flv",  ".jfif", ".jpe", ".jpeg",
                                             ".jpg",  ".m2ts", ".m4v",  ".mkv", ".mov",
                                             ".mp4",  ".mts",  ".png",  ".ts",  ".webm"};
    return std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

std::string PlaceOf(const ImportSource& source, const std::string& gallery, const std::string& game) {
    const fs::path path(source.path());
    // A name without an ending may have a dot in its date.
    std::string name = (HasMediaEnding(source.path()) ? path.stem() : path.filename()).string();
    if (!KXP::IsValidUtf8(game + name)) throw ImportError("has a name that is not UTF-8");
    if (name[0] == '.') throw ImportError("is hidden");
    name += ExtensionOf(source.kind());
    return (fs::path(gallery) / game / name).string();
}

FreePlace FindFreePlace(const std::string& place) {
    const fs::path path(place);
    const std::string start = (path.parent_path() / path.stem()).string();
    FreePlace found{place, {}};
    struct stat status {};
    for (int number = 2; lstat(found.path.c_str(), &status) == 0 && number < kMostPlaces; ++number) {
        found.taken.push_back(found.path);
        found.path = start + " (" + std::to_string(number) + ")" + path.extension().string();
    }
    return found;
}

}  // namespace importing
