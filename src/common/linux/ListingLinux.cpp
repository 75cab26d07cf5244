#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/System.h"
#include "common/TextUtil.h"

namespace KXP::Platform {
namespace {

enum class Kind { kFolder, kOther, kUnreachable };

// Links count as what they lead to. Nothing is opened, so that no pipe or device can block.
Kind KindOf(DIR* folder, const dirent& entry) {
    if (entry.d_type == DT_DIR) return Kind::kFolder;
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return Kind::kOther;
    struct stat status {};
    if (fstatat(dirfd(folder), entry.d_name, &status, 0) != 0) return Kind::kUnreachable;
    return S_ISDIR(status.st_mode) ? Kind::kFolder : Kind::kOther;
}

}  // namespace

std::vector<std::string> ListFolder(const std::string& folder, bool folders) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> opened(opendir(folder.c_str()), closedir);
    if (!opened) return names;
    int illegible = 0;
    while (const dirent* entry = readdir(opened.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (!IsValidUtf8(name)) {
            ++illegible;
        } else if (KindOf(opened.get(), *entry) == (folders ? Kind::kFolder : Kind::kOther)) {
            names.push_back(name);
        }
    }
    if (illegible > 0)
        KXP_LOG(LogMilestone, "Passed over %d names in %s that are not UTF-8", illegible, folder.c_str());
    return names;
}

}  // namespace KXP::Platform
