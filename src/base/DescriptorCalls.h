// Descriptors for events inside the process: programs that it starts do not inherit them, and their calls do
// not wait.
#pragma once

#include "base/FileDescriptor.h"

namespace KXP::Platform {

// The ends of a new pipe. False with errno set.
bool OpenPipe(FileDescriptor& readEnd, FileDescriptor& writeEnd);

// A socket of this family and type; closed, with errno set, when there is none.
FileDescriptor OpenSocket(int family, int type);

}  // namespace KXP::Platform
