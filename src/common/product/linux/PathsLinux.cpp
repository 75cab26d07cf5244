// The running program, and the user's videos by the file of freedesktop.org's xdg-user-dirs tool.
#include <climits>
#include <stdexcept>

#include <unistd.h>

#include "base/Path.h"
#include "base/ReadWrite.h"
#include "common/product/Profile.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

constexpr size_t kMaxUserDirsBytes = 1 << 20;

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
    return WithoutSlash(folder);
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

}  // namespace Platform
}  // namespace KXP
