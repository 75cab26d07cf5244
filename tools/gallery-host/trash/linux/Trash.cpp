#include "gallery-host/trash/Trash.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "base/ReadWrite.h"
#include "base/Text.h"
#include "common/files/FileUtil.h"
#include "common/results/RetVal.h"
#include "gallery-host/trash/linux/TrashFolders.h"
#include "gallery-host/trash/linux/TrashInfo.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kInfoEnding = ".trashinfo";
constexpr size_t kMaxInfoBytes = 64 << 10;

std::string_view WithoutEnding(std::string_view name) {
    const bool ends = name.size() > kInfoEnding.size() &&
                      name.compare(name.size() - kInfoEnding.size(), kInfoEnding.size(), kInfoEnding) == 0;
    return ends ? name.substr(0, name.size() - kInfoEnding.size()) : std::string_view();
}

bool IsBelow(const std::string& folder, const std::string& path) {
    return path.size() > folder.size() + 1 && path.compare(0, folder.size(), folder) == 0 &&
           path[folder.size()] == '/';
}

// A path that climbs would leave the gallery that it seems to be in.
bool Climbs(const std::string& path) {
    return ("/" + path + "/").find("/../") != std::string::npos;
}

// The gallery's folder by the name that the record has, and by the one that volumes' trash folders have; its
// games may be links to folders of other volumes.
class Gallery {
  public:
    explicit Gallery(const std::string& path) {
        const std::string name = KXP::WithoutSlash(path);
        roots_.push_back({name, name});
        Add(name);
        KXP::FolderReader reader(name);
        while (reader.Next())
            if (reader.IsLink() && reader.Kind() == KXP::EntryKind::Folder) Add(name + "/" + reader.Name());
    }

    // The path by the record's name, or an empty text for one outside.
    std::string PathIn(const std::string& path) const {
        if (Climbs(path) || !KXP::IsValidUtf8(path)) return {};
        for (const Root& root : roots_)
            if (IsBelow(root.real, path)) return root.name + path.substr(root.real.size());
        return {};
    }

    std::vector<std::string> Folders() const {
        std::vector<std::string> folders;
        for (const Root& root : roots_)
            folders.push_back(root.real);
        return folders;
    }

  private:
    struct Root {
        std::string name;
        std::string real;
    };

    void Add(const std::string& name) {
        std::error_code error;
        const std::string real = fs::canonical(name, error).string();
        if (!error) roots_.push_back({name, real});
    }

    std::vector<Root> roots_;
};

bool ReadInfo(int folder, const char* name, TrashInfo& info) {
    const KXP::FileDescriptor file(openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    KXP::FileBytes content;
    return file.IsOpen() && KXP::ReadWhole(file, kMaxInfoBytes, content) &&
           ReadTrashInfo(content.view(), info);
}

bool IsFile(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

void AddFrom(const TrashFolder& trash, const Gallery& gallery, std::vector<TrashedFile>& files) {
    const std::string infos = trash.path + "/info/";
    KXP::FolderReader reader(infos, KXP::Links::Refuse);
    while (reader.IsOpen() && reader.NextOfAll()) {
        const std::string_view name = WithoutEnding(reader.Name());
        TrashInfo info;
        if (name.empty() || !ReadInfo(reader.descriptor(), reader.Name(), info)) continue;
        const bool isAbsolute = info.path[0] == '/';
        const std::string path =
            gallery.PathIn(KXP::Tidied(isAbsolute ? info.path : trash.top + "/" + info.path));
        std::string file = trash.path + "/files/" + std::string(name);
        if (path.empty() || !IsFile(file)) continue;
        files.push_back({path, std::move(info.deleted), std::move(file), infos + reader.Name()});
    }
}

std::string RestoringFailed(int error) {
    if (error == EEXIST) return "another file is in its place";
    return std::string("cannot be restored: ") + std::strerror(error);
}

// From the trash of another volume. Returns the reason when it cannot.
std::string CopyBack(const TrashedFile& trashed) {
    struct stat there {};
    if (lstat(trashed.path.c_str(), &there) == 0) return RestoringFailed(EEXIST);
    errno = 0;
    if (KXP::FileCopyNew(trashed.file, trashed.path, std::atomic<bool>(false)) != KXP::Code::kOk)
        return RestoringFailed(errno != 0 ? errno : EIO);
    std::error_code error;
    fs::last_write_time(trashed.path, fs::last_write_time(trashed.file, error), error);
    const KXP::FileDescriptor copy = KXP::OpenForRead(trashed.path);
    if (!copy.IsOpen() || !KXP::Platform::MakeDurable(copy.get())) return RestoringFailed(errno);
    return unlink(trashed.file.c_str()) == 0 ? std::string() : RestoringFailed(errno);
}

}  // namespace

std::vector<TrashedFile> ListTrashed(const std::string& gallery) {
    return ListTrashed(gallery, FindTrashFolders(Gallery(gallery).Folders()));
}

std::vector<TrashedFile> ListTrashed(const std::string& gallery, const std::vector<TrashFolder>& folders) {
    const Gallery names(gallery);
    std::vector<TrashedFile> files;
    for (const TrashFolder& trash : folders)
        AddFrom(trash, names, files);
    std::sort(files.begin(), files.end(), [](const TrashedFile& one, const TrashedFile& other) {
        return std::tie(other.deleted, one.path, one.file) < std::tie(one.deleted, other.path, other.file);
    });
    return files;
}

std::string Restore(const TrashedFile& trashed) {
    std::error_code error;
    fs::create_directories(KXP::ParentOf(trashed.path), error);
    if (error) return RestoringFailed(error.value());
    if (!KXP::Platform::RenameNoReplace(AT_FDCWD, trashed.file, AT_FDCWD, trashed.path)) {
        std::string failure = errno == EXDEV ? CopyBack(trashed) : RestoringFailed(errno);
        if (!failure.empty()) return failure;
    }
    // Without its file it means nothing, to whatever program.
    fs::remove(trashed.info, error);
    return {};
}

}  // namespace host
