// The user's folders by freedesktop.org's base directory rules and by the file of its xdg-user-dirs tool.
#include <array>
#include <climits>
#include <stdexcept>

#include <pwd.h>
#include <unistd.h>

#include "common/FileDescriptor.h"
#include "common/Profile.h"
#include "common/System.h"
#include "common/TextUtil.h"

namespace KXP {
namespace {

constexpr size_t kMaxUserDirsBytes = 1 << 20;

std::string WithoutEndingSlash(std::string folder) {
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder;
}

// By the base directory rules a relative path counts as unset.
std::string FolderFromEnvironment(const char* name, const std::string& fallback) {
    const std::string folder = GetEnv(name).value_or("");
    return folder.empty() || folder.front() != '/' ? fallback : WithoutEndingSlash(folder);
}

std::string HomeOfPasswordEntry() {
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir)
        return "/";
    return found->pw_dir;
}

// The value of a line `XDG_VIDEOS_DIR="..."`, which the tool writes as a shell would read it: quoted, from
// the root or from $HOME, with backslashes before special characters. Empty for any other line.
std::string VideosFolderOfLine(const std::string& line, const std::string& home) {
    constexpr std::string_view kStart = "XDG_VIDEOS_DIR=\"";
    const size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line.compare(start, kStart.size(), kStart) != 0) return "";
    std::string folder;
    size_t at = start + kStart.size();
    const bool fromHome = line.compare(at, 5, "$HOME") == 0;
    if (fromHome) {
        folder = home;
        at += 5;
        if (at < line.size() && line[at] != '/' && line[at] != '"') return "";
    } else if (at >= line.size() || line[at] != '/') {
        return "";
    }
    for (; at < line.size() && line[at] != '"'; ++at) {
        if (line[at] == '\\' && at + 1 < line.size()) ++at;
        folder += line[at];
    }
    if (at >= line.size()) return "";
    return WithoutEndingSlash(folder);
}

}  // namespace

std::string GetExePath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    // One text on every platform; readers of logs search for it.
    if (length <= 0 || static_cast<size_t>(length) >= sizeof path)
        throw std::runtime_error("KXP::GetExeName _NSGetExecutablePath failed");
    return {path, static_cast<size_t>(length)};
}

namespace Platform {

std::string AppSupportFolder() {
    return FolderFromEnvironment("XDG_DATA_HOME", HomeFolder() + "/.local/share");
}

std::string HomeFolder() {
    const std::string home = GetEnv("HOME").value_or("");
    return WithoutEndingSlash(home.empty() ? HomeOfPasswordEntry() : home);
}

std::string MoviesFolder() {
    const std::string home = HomeFolder();
    std::string movies = home + "/Videos";
    FileBytes text;
    const FileDescriptor file = OpenForRead(LibraryFolder() + "/user-dirs.dirs");
    if (!file.IsOpen() || !ReadWhole(file, kMaxUserDirsBytes, text)) return movies;
    // The last line wins, as in a shell.
    for (const std::string& line : SplitString(std::string(text.view()), '\n')) {
        const std::string folder = VideosFolderOfLine(line, home);
        if (!folder.empty()) movies = folder;
    }
    return movies;
}

std::string LibraryFolder() {
    return FolderFromEnvironment("XDG_CONFIG_HOME", HomeFolder() + "/.config");
}

}  // namespace Platform
}  // namespace KXP
