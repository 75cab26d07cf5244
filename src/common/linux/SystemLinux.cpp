#include <sys/syscall.h>
#include <unistd.h>

#include "common/System.h"

namespace KXP {
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
