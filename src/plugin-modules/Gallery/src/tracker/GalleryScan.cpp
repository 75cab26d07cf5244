#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"

#include "CobalixUtil.h"
#include "base/FolderReader.h"

namespace {

void LogIllegible(const KXP::FolderReader& reader, const std::string& path) {
    if (reader.illegible() > 0)
        KXP_LOG(KXP::LogFailure, "%d entries of %s passed over: their names are not UTF-8",
                reader.illegible(), path.c_str());
}

void AppendFiles(const std::string& folder, KXP::Links links, std::vector<std::string>& files) {
    KXP::FolderReader reader(folder, links);
    while (reader.Next()) {
        const bool leadsToFolder = reader.IsFolder() || reader.Kind() == KXP::EntryKind::Folder;
        if (!leadsToFolder) files.push_back(folder + "/" + reader.Name());
    }
    LogIllegible(reader, folder);
}

}  // namespace

std::vector<std::string> ScanFolder(const std::string& folder) {
    std::vector<std::string> files;
    AppendFiles(folder, KXP::Links::Follow, files);
    return files;
}

std::vector<std::string> ScanGallery(const std::string& gallery) {
    std::vector<std::string> games;
    KXP::FolderReader reader(gallery);
    while (reader.Next())
        if (reader.IsFolder() && reader.Name()[0] != '.') games.push_back(gallery + reader.Name());
    LogIllegible(reader, gallery);
    std::vector<std::string> files;
    for (const std::string& game : games)
        AppendFiles(game, KXP::Links::Refuse, files);
    return files;
}
