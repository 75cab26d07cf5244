#include "plugin-modules/Gallery/src/tracker/GalleryScan.h"

#include <functional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "common/TextUtil.h"

namespace {

enum class EntryKind { Folder, LinkToFolder, File };

bool IsFolder(DIR* folder, const dirent& entry, int flags) {
    struct stat status {};
    return fstatat(dirfd(folder), entry.d_name, &status, flags) == 0 && S_ISDIR(status.st_mode);
}

EntryKind KindOf(DIR* folder, const dirent& entry) {
    if (entry.d_type == DT_DIR) return EntryKind::Folder;
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return EntryKind::File;
    if (IsFolder(folder, entry, AT_SYMLINK_NOFOLLOW)) return EntryKind::Folder;
    return IsFolder(folder, entry, 0) ? EntryKind::LinkToFolder : EntryKind::File;
}

DIR* OpenFolder(const std::string& path, int flags) {
    const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
    if (fd < 0) return nullptr;
    DIR* folder = fdopendir(fd);
    if (!folder) close(fd);
    return folder;
}

void ForEachEntry(const std::string& path, int flags,
                  const std::function<void(const char* name, EntryKind kind)>& use) {
    DIR* folder = OpenFolder(path, flags);
    if (!folder) return;
    int illegible = 0;
    while (const dirent* entry = readdir(folder)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (!KXP::IsValidUtf8(name)) {
            ++illegible;
            continue;
        }
        use(entry->d_name, KindOf(folder, *entry));
    }
    closedir(folder);
    if (illegible > 0)
        KXP_LOG(KXP::LogFailure, "%d entries of %s passed over: their names are not UTF-8", illegible,
                path.c_str());
}

void AppendFiles(const std::string& folder, int flags, std::vector<std::string>& files) {
    ForEachEntry(folder, flags, [&](const char* name, EntryKind kind) {
        if (kind == EntryKind::File) files.push_back(folder + "/" + name);
    });
}

}  // namespace

std::vector<std::string> ScanFolder(const std::string& folder) {
    std::vector<std::string> files;
    AppendFiles(folder, 0, files);
    return files;
}

std::vector<std::string> ScanGallery(const std::string& gallery) {
    std::vector<std::string> games;
    ForEachEntry(gallery, 0, [&](const char* name, EntryKind kind) {
        if (kind == EntryKind::Folder && name[0] != '.') games.push_back(gallery + name);
    });
    std::vector<std::string> files;
    for (const std::string& game : games)
        AppendFiles(game, O_NOFOLLOW, files);
    return files;
}
