#include <crt_externs.h>
#include <pthread.h>
#include <sys/event.h>
#include <unistd.h>

#include "common/system/System.h"

namespace KXP::Platform {

// A library may not name the variable itself.
char** Environment() {
    return *_NSGetEnviron();
}

uint64_t ThreadNumber() {
    uint64_t number = 0;
    (void)pthread_threadid_np(pthread_self(), &number);
    return number;
}

int OpenExitDescriptor(pid_t pid) {
    const int queue = kqueue();
    if (queue < 0) return -1;
    struct kevent exit;
    EV_SET(&exit, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (kevent(queue, &exit, 1, nullptr, 0, nullptr) == 0) return queue;
    close(queue);
    return -1;
}

const int kSpawnCloses = POSIX_SPAWN_CLOEXEC_DEFAULT;

void CloseOtherDescriptors(posix_spawn_file_actions_t*) {}

}  // namespace KXP::Platform
