#include "common/files/DirUtil.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "common/results/Exception.h"
#include "common/system/System.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

constexpr mode_t kPrivateFolder = 0700;

std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
    return resolved ? resolved.get() : "";
}

bool Exists(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

template <typename Text>
Text FileNameOf(const Text& path, typename Text::value_type slash, typename Text::value_type backslash) {
    size_t at = path.rfind(slash);
    if (at == Text::npos) at = path.rfind(backslash);
    return at == Text::npos ? path : path.substr(at + 1);
}

// The text after the last dot, unless the dot is the name's first or last character.
std::string ExtensionOf(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? "" : name.substr(dot + 1);
}

}  // namespace

bool DirectoryExists(const std::string& path) {
    return IsUsablePath(path) && access(path.c_str(), F_OK) == 0 && OpenFolder(path).IsOpen();
}

bool DirectoryWritable(const std::string& path) {
    return access(path.c_str(), W_OK) == 0;
}

bool IsDirectory(const dirent* entry) {
    if (entry->d_type == DT_DIR) return true;
    if (entry->d_type != DT_UNKNOWN && entry->d_type != DT_LNK) return false;
    // Looked up in the current folder, which may know another entry of this name; walks do not ask this.
    struct stat status {};
    if (stat(entry->d_name, &status) != 0) {
        KXP_LOG(LogMilestone, "KXP::IsDirectory stat failed for %s with errno %d", entry->d_name, errno);
        return false;
    }
    return S_ISDIR(status.st_mode);
}

bool PathIsAbsolute(const std::string& path) {
    // Every path in the product's configuration is taken as it stands; callers rely on it.
    return !path.empty();
}

bool SamePath(const std::string& first, const std::string& second) {
    return RealPath(first) == RealPath(second);
}

std::string GetDirName(const std::string& path) {
    return path.substr(0, path.find_last_of("/\\"));
}

std::string GetBaseName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string GetBaseNameNoExt(const std::string& path) {
    const std::string name = GetBaseName(path);
    return name.substr(0, name.rfind('.'));
}

std::string GetFileNameFromPath(const std::string& path) {
    return FileNameOf(path, '/', '\\');
}

std::wstring GetFileNameFromPath(const std::wstring& path) {
    return FileNameOf(path, L'/', L'\\');
}

std::string GetLongPath(const std::string& path, bool) {
    return path;
}

std::string FileJoin(const std::vector<std::string>& parts, const std::string& last) {
    std::string joined;
    for (size_t i = 0; i < parts.size(); ++i)
        joined += (i > 0 ? "/" : "") + parts[i];
    if (!parts.empty() && !last.empty()) joined += "/" + last;
    return joined;
}

std::string CreateDirectoryPath(const std::vector<std::string>& parts) {
    std::vector<std::string> paths;
    for (const std::string& part : parts)
        for (const std::string& name : SplitString(part, "/"))
            if (!name.empty()) paths.push_back((paths.empty() ? "" : paths.back()) + "/" + name);
    if (paths.empty()) return "";
    // Nearly always all of it is there.
    if (access(paths.back().c_str(), F_OK) == 0) return paths.back();
    for (const std::string& path : paths)
        if (mkdir(path.c_str(), kPrivateFolder) != 0 && errno != EEXIST && errno != EISDIR)
            throw Exception(Code::kFailure, "ERROR: Unable to create folder", errno);
    return paths.back();
}

int DirectoryRemove(const std::string& path) {
    return rmdir(path.c_str());
}

void LogIllegibleNames(const FolderReader& reader, const std::string& folder) {
    if (reader.illegible() == 0) return;
    KXP_LOG(LogFailure, "Passed over %d names in %s that are not UTF-8", reader.illegible(), folder.c_str());
}

std::vector<std::string> GetFilesInDir(const std::string& folder) {
    return Platform::ListFolder(folder, false);
}

std::vector<std::string> GetFilesInDirWithExtension(const std::string& folder, const std::string& extension) {
    std::vector<std::string> names;
    for (std::string& name : GetFilesInDir(folder)) {
        if (ExtensionOf(name) == extension) names.push_back(std::move(name));
    }
    return names;
}

std::vector<std::string> GetDirsInDir(const std::string& folder) {
    return Platform::ListFolder(folder, true);
}

std::vector<std::string> EnumFiles(const std::string& folder) {
    return GetFilesInDir(folder);
}

std::vector<std::string> EnumFilesWithExtension(const std::string& folder, const std::string& extension) {
    return GetFilesInDirWithExtension(folder, extension);
}

std::vector<std::string> EnumDirectories(const std::string& folder) {
    return GetDirsInDir(folder);
}

std::string FindFileInDirs(const std::vector<std::string>& folders, const std::string& path) {
    const std::filesystem::path wanted(path);
    if (wanted.has_root_directory()) {
        if (Exists(wanted)) return path;
        KXP_LOG(LogFailure, "Trying to find absolute path %s but it does not exist", path.c_str());
        return "";
    }
    for (const std::string& folder : folders) {
        const std::filesystem::path candidate = std::filesystem::path(folder) / wanted;
        if (Exists(candidate)) return candidate.string();
    }
    KXP_LOG(LogFailure, "Trying to find path %s relatively but could not find it", path.c_str());
    return "";
}

}  // namespace KXP
