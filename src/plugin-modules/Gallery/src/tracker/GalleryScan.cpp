#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/tracker/FailedLook.h"

namespace {

void LogIllegible(const KXP::FolderReader& reader, const std::string& path) {
    if (reader.illegible() > 0)
        KXP_LOG(KXP::LogFailure, "%d entries of %s passed over: their names are not UTF-8",
                reader.illegible(), path.c_str());
}

// Whether a folder that could not be opened, or not be read to its end, is there all the same.
bool IsUnread(const KXP::FolderReader& reader, int openError) {
    return reader.IsOpen() ? reader.error() != 0
                           : openError != ENOTDIR && openError != ELOOP && !MeansGone(openError);
}

void AppendFiles(const std::string& folder, FoundFiles& found) {
    KXP::FolderReader reader(folder, KXP::Links::Refuse);
    const int openError = errno;
    while (reader.Next()) {
        if (reader.IsFolder()) continue;
        struct stat status {};
        const bool looked = reader.Look(status, KXP::Links::Refuse);
        if (looked ? !S_ISREG(status.st_mode) : MeansGone(errno)) continue;
        found.files.push_back({folder + "/" + reader.Name(), looked ? StampOf(status) : FileStamp{}});
    }
    if (IsUnread(reader, openError)) found.unread.push_back(folder);
    LogIllegible(reader, folder);
}

}  // namespace

FoundFiles ScanFolder(const std::string& folder) {
    FoundFiles found;
    AppendFiles(folder, found);
    return found;
}

FoundFiles ScanGallery(const std::string& gallery) {
    std::vector<std::string> games;
    FoundFiles found;
    KXP::FolderReader reader(gallery);
    const int openError = errno;
    while (reader.Next())
        if (reader.IsFolder() && reader.Name()[0] != '.') games.push_back(gallery + reader.Name());
    if (IsUnread(reader, openError)) found.unread.push_back(KXP::WithoutSlash(gallery));
    LogIllegible(reader, gallery);
    for (const std::string& game : games)
        AppendFiles(game, found);
    return found;
}

FoundFiles FilesSeen(const media::SeenFiles& seen) {
    FoundFiles found;
    found.files.reserve(seen.files.size());
    std::string path;
    for (const media::SeenFiles::File& file : seen.files) {
        path.assign(seen.folders[file.folder]).append("/").append(&seen.names[file.name]);
        found.files.push_back({path, {file.size, file.modifiedNs, file.inode}});
    }
    return found;
}
