#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/DescriptorCalls.h"

namespace KXP::Platform {
namespace {

// A program that another thread starts before this inherits the descriptor; the product starts its own with
// all others closed.
void Prepare(const FileDescriptor& descriptor) {
    (void)fcntl(descriptor.get(), F_SETFD, FD_CLOEXEC);
    (void)fcntl(descriptor.get(), F_SETFL, fcntl(descriptor.get(), F_GETFL) | O_NONBLOCK);
}

}  // namespace

bool OpenPipe(FileDescriptor& readEnd, FileDescriptor& writeEnd) {
    int ends[2];
    if (pipe(ends) != 0) return false;
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
    Prepare(readEnd);
    Prepare(writeEnd);
    return true;
}

FileDescriptor OpenSocket(int family, int type) {
    FileDescriptor descriptor(socket(family, type, 0));
    if (descriptor.IsOpen()) Prepare(descriptor);
    return descriptor;
}

}  // namespace KXP::Platform
