#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/DescriptorCalls.h"

namespace KXP::Platform {

bool OpenPipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    return true;
}

FileDescriptor OpenSocket(int family, int type) {
    return FileDescriptor(socket(family, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

}  // namespace KXP::Platform
