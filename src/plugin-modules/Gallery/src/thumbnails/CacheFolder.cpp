#include "plugin-modules/Gallery/src/thumbnails/CacheFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include "base/Places.h"
#include "common/text/TextUtil.h"

bool IsOwn(const struct stat& status) {
    return status.st_uid == geteuid();
}

KXP::FileDescriptor OpenInCache(const std::string& path, Missing missing) {
    const std::string cache = KXP::Platform::CacheFolder();
    if (missing == Missing::Make) (void)mkdir(cache.c_str(), 0700);
    KXP::FileDescriptor folder = KXP::OpenFolder(cache);
    struct stat status {};
    for (const std::string& name : KXP::SplitString(path, '/')) {
        if (name.empty()) continue;
        if (!folder.IsOpen()) return {};
        if (missing == Missing::Make) (void)mkdirat(folder.get(), name.c_str(), 0700);
        folder = KXP::OpenFolderAt(folder, name);
        if (fstat(folder.get(), &status) != 0 || !IsOwn(status)) return {};
    }
    return folder;
}
