#include "gallery-host/trash/linux/TrashFolders.h"

#include <algorithm>
#include <map>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "base/Places.h"
#include "common/drives/Drives.h"

namespace host {
namespace {

// A link, or somebody else's folder, could make any file look like one that was deleted.
bool IsOwnFolder(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

bool HoldsAny(const std::string& mount, const std::vector<std::string>& paths) {
    return std::any_of(paths.begin(), paths.end(), [&](const std::string& path) {
        return mount == "/" || (path + "/").compare(0, mount.size() + 1, mount + "/") == 0;
    });
}

void Add(std::vector<TrashFolder>& folders, std::string path, std::string top) {
    if (IsOwnFolder(path)) folders.push_back({std::move(path), std::move(top)});
}

}  // namespace

std::vector<TrashFolder> FindTrashFolders(const std::vector<std::string>& folders) {
    std::vector<TrashFolder> found;
    const std::string data = KXP::Platform::AppSupportFolder();
    Add(found, data + "/Trash", data);
    std::map<std::string, std::string> drives;
    KXP::EnumDrives(folders, drives);
    const std::string user = std::to_string(geteuid());
    for (const auto& [mount, word] : drives) {
        // Most reserved ones hold no files of users; a dead server would keep us waiting.
        if ((word == "reserved" || word == "network") && !HoldsAny(mount, folders)) continue;
        const std::string trash = (mount == "/" ? "" : mount) + "/.Trash";
        for (const char* separator : {"/", "-"})
            Add(found, std::string(trash).append(separator).append(user), mount);
    }
    return found;
}

}  // namespace host
