#include "plugin-modules/Gallery/src/media/CaptureFolder.h"

#include <filesystem>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "common/files/DirUtil.h"
#include "common/files/FileUtil.h"
#include "plugin-modules/Gallery/src/media/OwnershipSniffer.h"

namespace media {
namespace {

bool CountsAsOwn(const std::string& path) {
    SniffResult result;
    if (SniffFile(path, result) >= 0) return result.isOwn;
    KXP_LOG(KXP::LogFailure, "Failure reading file type, considering directory not empty");
    return true;
}

// Whether the path is that of a file in a game's folder. By real path, whatever "..", links and doubled "/"
// the text holds.
bool LiesInGameOf(const std::string& path, const std::string& gallery) {
    std::error_code error;
    const std::filesystem::path game = std::filesystem::canonical(path.substr(0, path.rfind('/') + 1), error);
    if (error) return false;
    const std::filesystem::path root = std::filesystem::canonical(gallery, error);
    return !error && game.parent_path() == root && game != root && game.filename().native().front() != '.';
}

}  // namespace

bool IsDirectoryEmpty(const std::string& path, bool onlyOwn) {
    KXP::FolderReader folder(path);
    while (folder.Next()) {
        if (folder.Name()[0] == '.' || folder.Kind() == KXP::EntryKind::Folder) continue;
        if (!onlyOwn || CountsAsOwn(path + "/" + folder.Name())) return false;
    }
    KXP::LogIllegibleNames(folder, path);
    return true;
}

bool CheckIfThumbnailExistsForFile(const std::string& path, const std::string& extension,
                                   std::string& thumbnail) {
    const char* ending = nullptr;
    if (extension == ".exr") ending = ".png";
    if (extension == ".jpg") ending = ".jpg";
    if (!ending) return false;
    std::string candidate = path.substr(0, path.rfind('.')) + kThumbnailMark + ending;
    if (!KXP::FileExists(candidate)) return false;
    thumbnail = std::move(candidate);
    return true;
}

bool IsOwnCapture(const std::string& path) {
    SniffResult result;
    return KXP::IsRegularFile(path) && SniffFile(path, result) >= 0 && result.isOwn;
}

bool MayDeleteCapture(const std::string& path, const std::string& gallery) {
    if (!KXP::IsRegularFile(path)) return false;
    return LiesInGameOf(path, gallery) || IsOwnCapture(path);
}

}  // namespace media
