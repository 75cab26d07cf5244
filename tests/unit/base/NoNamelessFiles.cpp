// Takes the place of the platform's.
#include <cerrno>

#include "base/NamelessFile.h"

namespace KXP::Platform {

int OpenNameless(int, unsigned) {
    errno = EOPNOTSUPP;
    return -1;
}

bool GiveName(int, int, const std::string&) {
    errno = EOPNOTSUPP;
    return false;
}

}  // namespace KXP::Platform
