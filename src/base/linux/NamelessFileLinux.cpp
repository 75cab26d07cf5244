#include <fcntl.h>
#include <unistd.h>

#include "base/NamelessFile.h"

namespace KXP::Platform {

int OpenNameless(int folder, unsigned mode) {
    return openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, static_cast<mode_t>(mode));
}

bool GiveName(int fd, int folder, const std::string& name) {
    const std::string file = "/proc/self/fd/" + std::to_string(fd);
    return linkat(AT_FDCWD, file.c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace KXP::Platform
