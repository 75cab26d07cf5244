// The user's folders by freedesktop.org's base directory rules.
#include <array>
#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

#include "base/Path.h"
#include "base/Places.h"

namespace KXP::Platform {
namespace {

// By the base directory rules a relative path counts as unset.
std::string FolderFromEnvironment(const char* name, const std::string& fallback) {
    const char* folder = std::getenv(name);
    return folder && *folder == '/' ? WithoutSlash(folder) : fallback;
}

std::string HomeOfPasswordEntry() {
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir)
        return "/";
    return found->pw_dir;
}

}  // namespace

std::string AppSupportFolder() {
    return FolderFromEnvironment("XDG_DATA_HOME", HomeFolder() + "/.local/share");
}

std::string CacheFolder() {
    return FolderFromEnvironment("XDG_CACHE_HOME", HomeFolder() + "/.cache");
}

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    return WithoutSlash(home && *home ? home : HomeOfPasswordEntry());
}

std::string LibraryFolder() {
    return FolderFromEnvironment("XDG_CONFIG_HOME", HomeFolder() + "/.config");
}

}  // namespace KXP::Platform
