#include <sys/syscall.h>
#include <unistd.h>

#include "base/ReadWrite.h"
#include "common/system/System.h"
#include "common/text/TextUtil.h"

namespace KXP {
namespace {

constexpr size_t kMaxOsReleaseBytes = 1 << 20;

// A value of os-release without the quotes that a shell would take off,
// https://www.freedesktop.org/software/systemd/man/os-release.html
std::string Unquoted(const std::string& value) {
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

std::string GetOsVersion() {
    const std::string key = "VERSION_ID=";
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        FileBytes text;
        const FileDescriptor file = OpenForRead(path);
        if (!file.IsOpen() || !ReadWhole(file, kMaxOsReleaseBytes, text)) continue;
        for (const std::string& line : SplitString(std::string(text.view()), '\n')) {
            if (line.compare(0, key.size(), key) == 0) return Unquoted(line.substr(key.size()));
        }
        return "";
    }
    return "";
}

std::string GetOsLocale() {
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = GetEnv(name).value_or("");
        if (!locale.empty()) break;
    }
    // The form is language_TERRITORY.codeset@modifier.
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return "en-US";
    for (char& c : locale) {
        if (c == '_') c = '-';
    }
    return locale;
}

namespace Platform {

char** Environment() {
    return environ;
}

uint64_t ThreadNumber() {
    return static_cast<uint64_t>(syscall(SYS_gettid));
}

int OpenExitDescriptor(pid_t pid) {
    // The C library's declaration of the call is not one for C++.
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

const int kSpawnCloses = 0;

void CloseOtherDescriptors(posix_spawn_file_actions_t* actions) {
    posix_spawn_file_actions_addclosefrom_np(actions, STDERR_FILENO + 1);
}

}  // namespace Platform
}  // namespace KXP
