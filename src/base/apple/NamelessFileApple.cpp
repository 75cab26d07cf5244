#include <cerrno>

#include "base/NamelessFile.h"

namespace KXP::Platform {

int OpenNameless(int, unsigned) {
    errno = ENOTSUP;
    return -1;
}

bool GiveName(int, int, const std::string&) {
    errno = ENOTSUP;
    return false;
}

}  // namespace KXP::Platform
