#include "gallery-host/base/Paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "common/product/Profile.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// Keeps symbolic links: the gallery may be known by that path, and rm of a link must not remove its target.
// Only
// ".." requires following them.
fs::path Resolve(const fs::path& absolute) {
    if (std::find(absolute.begin(), absolute.end(), "..") == absolute.end())
        return absolute.lexically_normal();
    const fs::path name = absolute.filename();
    if (name == "..") return fs::weakly_canonical(absolute);
    return (fs::weakly_canonical(absolute.parent_path()) / name).lexically_normal();
}

}  // namespace

std::string AbsolutePath(const std::string& path) {
    if (path.empty()) throw Failure(kExitFailed, "an empty name is no path");
    if (!IsUtf8(path))
        throw Failure(kExitFailed, path + ": not a name in UTF-8, which messages are written in");
    try {
        return Resolve(fs::absolute(path)).string();
    } catch (const fs::filesystem_error& error) {
        throw Failure(kExitFailed, path + ": " + error.code().message());
    }
}

std::string FolderPath(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
        throw Failure(kExitFailed, path + ": " + (error ? error.message() : "No such file or directory"));
    if (!fs::is_directory(status)) throw Failure(kExitFailed, path + ": not a folder");
    if (access(path.c_str(), R_OK | X_OK) != 0)
        throw Failure(kExitFailed, path + ": " + std::error_code(errno, std::generic_category()).message());
    return AbsolutePath(path);
}

std::string InProduct(const std::string& path) {
    return (fs::path(KXP::GetExePath()).parent_path().parent_path() / path).string();
}

bool IsFolder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

std::chrono::milliseconds TimeToCopy(const std::string& path) {
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(path, error);
    return std::chrono::milliseconds(error ? 0 : bytes / 10'000);
}

std::string WhyNot(const std::string& path, const std::string& otherwise) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) return "is a folder";
    return fs::exists(status) ? otherwise : "No such file or directory";
}

}  // namespace host
