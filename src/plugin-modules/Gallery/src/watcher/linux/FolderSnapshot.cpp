#include "plugin-modules/Gallery/src/watcher/linux/FolderSnapshot.h"

#include <cerrno>
#include <ctime>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "base/FolderReader.h"
#include "base/Text.h"

namespace watcher {
namespace {

int64_t Nanoseconds(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

// After a look that failed, by errno. Nothing can be reached by a path that is too long.
Item ItemNotSeen() {
    Item item;
    const bool none = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
    item.kind = none ? ItemKind::None : ItemKind::Unknown;
    return item;
}

}  // namespace

Item ItemOf(const struct stat& status) {
    Item item;
    item.kind = S_ISDIR(status.st_mode)   ? ItemKind::Folder
                : S_ISREG(status.st_mode) ? ItemKind::File
                                          : ItemKind::Other;
    item.stamp = {item.kind == ItemKind::Folder, status.st_ino, status.st_size, Nanoseconds(status.st_mtim)};
    item.volume = status.st_dev;
    item.changedNs = Nanoseconds(status.st_ctim);
    item.links = status.st_nlink;
    return item;
}

Item LookAt(const std::string& path, bool follow) {
    struct stat status {};
    const int flags = follow ? 0 : AT_SYMLINK_NOFOLLOW;
    if (fstatat(AT_FDCWD, path.empty() ? "/" : path.c_str(), &status, flags) != 0) return ItemNotSeen();
    return ItemOf(status);
}

int64_t FileClockNs() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

void FolderSnapshot::Add(std::string_view name, const Item& item) {
    if (item.kind == ItemKind::None || item.kind == ItemKind::Other) return;
    entries.push_back({std::string(name), item});
    if (item.kind == ItemKind::Unknown) allKnown = false;
    if (!KXP::IsValidUtf8(name)) illegible = true;
}

bool TakeSnapshot(const std::string& folder, bool follow, const std::atomic<bool>& stop,
                  FolderSnapshot& snapshot) {
    KXP::FolderReader reader(folder.empty() ? "/" : folder, follow ? KXP::Links::Follow : KXP::Links::Refuse);
    struct stat status {};
    if (!reader.IsOpen() || fstat(reader.descriptor(), &status) != 0) return false;
    snapshot.folder = ItemOf(status);
    while (!stop && reader.NextOfAll()) {
        const std::string_view name = reader.Name();
        if (name == "." || name == "..") continue;
        snapshot.Add(name, reader.Look(status, KXP::Links::Refuse) ? ItemOf(status) : ItemNotSeen());
    }
    return !stop && reader.error() == 0;
}

}  // namespace watcher
