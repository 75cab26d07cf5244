// The functions of DirUtil.h that walk a tree. Trees are hostile: links are never followed, and the modes of
// their targets never changed.
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "CobalixUtil.h"
#include "common/files/DirUtil.h"

namespace KXP {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxEntriesOnPath = 501;

bool IsLink(const fs::path& path) {
    std::error_code error;
    return fs::is_symlink(path, error);
}

// 0 or errno. A link stays as it is, which is no failure.
int AddOwnerWrite(const fs::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return errno;
    if (S_ISLNK(status.st_mode)) return 0;
    const mode_t mode = (status.st_mode & 07777) | S_IWUSR;
    return fchmodat(AT_FDCWD, path.c_str(), mode, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

// Calls `report(path, errno)` for each entry that could not be made writable.
template <typename Report>
void MakeEntriesWritable(const std::string& path, Report report) {
    if (IsLink(path)) return;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        const int error = AddOwnerWrite(entry.path());
        if (error != 0) report(entry.path(), error);
    }
}

// Whether copying `source` to `destination` would copy the copy, or the folder onto itself.
bool IsInside(const std::string& destination, const std::string& source) {
    std::error_code error;
    const fs::path outer = fs::canonical(source, error);
    const fs::path inner = fs::weakly_canonical(fs::absolute(destination), error);
    if (error) return false;
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

bool CreateDestination(const std::string& destination) {
    std::error_code error;
    if (fs::exists(destination, error)) {
        KXP_LOG(LogMilestone, "Dest directory [%s] already exists", destination.c_str());
        return true;
    }
    if (fs::create_directory(destination, error)) return true;
    KXP_LOG(LogFailure, "Unable to create destination directory [%s]", destination.c_str());
    return false;
}

void CopyFileOver(const fs::path& from, const fs::path& to) {
    std::error_code error;
    if (!fs::is_regular_file(from, error)) {
        KXP_LOG(LogFailure, "Passing over [%s], which is no file", from.c_str());
        return;
    }
    const fs::file_type target = fs::status(to, error).type();
    if (target != fs::file_type::not_found && target != fs::file_type::regular) {
        KXP_LOG(LogFailure, "Passing over [%s], which stands where no file can be written", to.c_str());
        return;
    }
    // Overwriting truncates first, so a file must not be copied onto itself by way of a link.
    if (fs::equivalent(from, to, error)) return;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
}

}  // namespace

void DirectoryDeleteRecursive(const std::string& path) {
    MakeEntriesWritable(path, [](const fs::path& entry, int error) {
        KXP_LOG(LogFailure, "Failed getting write permission for %s: %s", entry.c_str(),
                std::generic_category().message(error).c_str());
    });
    fs::remove_all(path);
}

void MakeDirectoryWritable(const std::string& path) {
    MakeEntriesWritable(path, [](const fs::path& entry, int error) {
        KXP_LOG(LogFailure, "Failed setting permission for [%s]: [0x%X]", entry.filename().c_str(),
                static_cast<unsigned>(error));
    });
}

bool DirectoryCopy(const std::string& source, const std::string& destination, int count) {
    std::error_code error;
    if (!fs::is_directory(source, error)) {
        KXP_LOG(LogFailure, "Source directory [%s] does not exist or is not a directory.", source.c_str());
        return false;
    }
    if (count == 0 && IsInside(destination, source)) {
        KXP_LOG(LogFailure, "Dest directory [%s] lies inside the source", destination.c_str());
        return false;
    }
    if (!CreateDestination(destination)) return false;
    const int limit = std::max(kMaxEntriesOnPath, count);
    for (const fs::directory_entry& entry : fs::directory_iterator(source)) {
        if (++count == limit + 1) {
            KXP_LOG(LogFailure, "Too many files to handle [%d]", count);
            return false;
        }
        const fs::path to = fs::path(destination) / entry.path().filename();
        // The count is passed down and never returned: a budget along each path from the root.
        if (fs::is_directory(entry.symlink_status())) {
            if (!DirectoryCopy(entry.path().string(), to.string(), count)) return false;
        } else {
            CopyFileOver(entry.path(), to);
        }
    }
    return true;
}

}  // namespace KXP
