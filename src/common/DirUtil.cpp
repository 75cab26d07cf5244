#include "common/DirUtil.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FolderReader.h"
#include "base/Path.h"
#include "common/Exception.h"
#include "common/System.h"
#include "common/TextUtil.h"

namespace KXP {
namespace {

constexpr mode_t kPrivateFolder = 0700;

std::string RealPath(const std::string& path) {
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
    return resolved ? resolved.get() : "";
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

std::string GetFileNameFromPath(const std::string& path) {
    size_t at = path.rfind('/');
    if (at == std::string::npos) at = path.rfind('\\');
    return at == std::string::npos ? path : path.substr(at + 1);
}

std::string FileJoin(const std::vector<std::string>& parts) {
    std::string joined;
    for (size_t i = 0; i < parts.size(); ++i)
        joined += (i > 0 ? "/" : "") + parts[i];
    return joined;
}

std::string CreateDirectoryPath(const std::vector<std::string>& parts) {
    std::string path;
    for (const std::string& part : parts) {
        for (const std::string& name : SplitString(part, "/")) {
            if (name.empty()) continue;
            path += "/" + name;
            if (mkdir(path.c_str(), kPrivateFolder) == 0 || errno == EEXIST || errno == EISDIR) continue;
            throw Exception(Code::kFailure, "ERROR: Unable to create folder", errno);
        }
    }
    return path;
}

int DirectoryRemove(const std::string& path) {
    return rmdir(path.c_str());
}

void LogIllegibleNames(const FolderReader& reader, const std::string& folder) {
    if (reader.illegible() == 0) return;
    KXP_LOG(LogFailure, "Passed over %d names in %s that are not UTF-8", reader.illegible(), folder.c_str());
}

std::vector<std::string> EnumFilesWithExtension(const std::string& folder, const std::string& extension) {
    std::vector<std::string> names;
    for (std::string& name : Platform::ListFolder(folder, false)) {
        if (ExtensionOf(name) == extension) names.push_back(std::move(name));
    }
    return names;
}

std::vector<std::string> EnumDirectories(const std::string& folder) {
    return Platform::ListFolder(folder, true);
}

}  // namespace KXP
