#include "gallery-host/base/WakeUp.h"

#include <cerrno>
#include <cstring>
#include <string>

#include <unistd.h>

#include "base/DescriptorCalls.h"
#include "gallery-host/base/Failure.h"

namespace host {

WakeUp::WakeUp() {
    if (!KXP::Platform::OpenPipe(readable_, writable_))
        throw Failure(kExitFailed, std::string("cannot make a pipe: ") + std::strerror(errno));
}

void WakeUp::Signal() const {
    // A pipe that is full is readable already.
    (void)!write(writable_.get(), "", 1);
}

void WakeUp::Clear() const {
    char bytes[4096];
    while (read(readable_.get(), bytes, sizeof bytes) == sizeof bytes) {
    }
}

}  // namespace host
