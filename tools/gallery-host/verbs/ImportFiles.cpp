#include "gallery-host/verbs/ImportFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>

#include "base/FolderReader.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/base/Printable.h"
#include "importing/CapturePlace.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 40;

}  // namespace

bool IsInside(const std::string& path, const std::string& folder) {
    return path.compare(0, folder.size(), folder) == 0 &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

void ImportFiles::Add(const std::string& path) {
    if (IsInside(path, gallery_)) throw Failure(kExitFailed, path + ": is in the gallery already");
    if (IsFolder(path))
        AddFolder(path, 0);
    else
        AddFile(path);
}

void ImportFiles::AddFile(const std::string& path) {
    struct stat status {};
    const bool isThere = stat(path.c_str(), &status) == 0;
    files_.push_back({path, isThere ? static_cast<uint64_t>(status.st_size) : 0});
    bytes_ += files_.back().size;
}

void ImportFiles::AddFolder(const std::string& folder, int depth) {
    std::vector<std::string> found;
    std::vector<std::string> folders;
    KXP::FolderReader reader(folder);
    if (!reader.IsOpen()) Say(Printable(folder) + ": " + std::strerror(errno));
    while (reader.Next()) {
        if (reader.Name()[0] == '.' || reader.IsLink()) continue;
        const std::string path = (fs::path(folder) / reader.Name()).string();
        if (reader.IsFolder())
            folders.push_back(path);
        else if (importing::HasMediaEnding(path))
            found.push_back(path);
    }
    std::sort(found.begin(), found.end());
    std::sort(folders.begin(), folders.end());
    for (const std::string& path : found)
        AddFile(path);
    for (const std::string& path : folders)
        if (depth < kDeepest && !IsInside(path, gallery_)) AddFolder(path, depth + 1);
}

}  // namespace host
