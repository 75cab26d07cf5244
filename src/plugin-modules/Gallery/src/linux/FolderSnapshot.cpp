#include "plugin-modules/Gallery/src/linux/FolderSnapshot.h"

#include <cerrno>
#include <ctime>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "common/FileDescriptor.h"
#include "common/TextUtil.h"

namespace watcher {
namespace {

int64_t Nanoseconds(const timespec& time) {
    return static_cast<int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

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

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::unique_ptr<DIR, CloseFolder> OpenFolder(const std::string& path, bool follow) {
    const int flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | (follow ? 0 : O_NOFOLLOW);
    KXP::FileDescriptor file(open(path.empty() ? "/" : path.c_str(), flags));
    std::unique_ptr<DIR, CloseFolder> folder(file.IsOpen() ? fdopendir(file.get()) : nullptr);
    if (folder) file.Release();
    return folder;
}

void AddEntry(int folder, const char* name, FolderSnapshot& snapshot) {
    const std::string_view text = name;
    if (text == "." || text == "..") return;
    if (!KXP::IsValidUtf8(text)) {
        ++snapshot.illegible;
        return;
    }
    struct stat status {};
    if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return;  // gone by now
    Item item = ItemOf(status);
    if (item.kind != ItemKind::Other) snapshot.entries.push_back({name, item});
}

}  // namespace

Item LookAt(const std::string& path, bool follow) {
    struct stat status {};
    const int flags = follow ? 0 : AT_SYMLINK_NOFOLLOW;
    if (fstatat(AT_FDCWD, path.empty() ? "/" : path.c_str(), &status, flags) != 0) return {};
    return ItemOf(status);
}

int64_t FileClockNs() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

bool TakeSnapshot(const std::string& folder, bool follow, const std::atomic<bool>& stop,
                  FolderSnapshot& snapshot) {
    const auto reader = OpenFolder(folder, follow);
    struct stat status {};
    if (!reader || fstat(dirfd(reader.get()), &status) != 0) return false;
    snapshot.folder = ItemOf(status);
    while (!stop) {
        errno = 0;  // the only way to tell a failure from the end
        const dirent* entry = readdir(reader.get());
        if (!entry) return errno == 0;
        AddEntry(dirfd(reader.get()), entry->d_name, snapshot);
    }
    return false;
}

}  // namespace watcher
