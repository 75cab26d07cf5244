// Files without a name, of which nothing is left when the process ends.
#pragma once

#include <string>

namespace KXP::Platform {

// Creates such a file in the open folder, for reading and writing; it vanishes when it is closed. Returns -1
// with errno set where the system or the volume has none.
int OpenNameless(int folder, unsigned mode);

// Gives the file a name, which must be free. False with errno set.
bool GiveName(int fd, int folder, const std::string& name);

}  // namespace KXP::Platform
