// Events of the kernel.
#pragma once

#include <stdint.h>
#include <time.h>

#define EVFILT_READ (-1)
#define EVFILT_WRITE (-2)
#define EVFILT_PROC (-5)
#define EV_ADD 0x0001
#define EV_DELETE 0x0002
#define EV_ONESHOT 0x0010
#define EV_CLEAR 0x0020
#define EV_ERROR 0x4000
#define EV_EOF 0x8000
#define EV_OOBAND 0x2000
#define NOTE_EXIT 0x80000000U

struct kevent {
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

#define EV_SET(event, a, b, c, d, e, f) (*(event) = {(a), (b), (c), (d), (e), (f)})

extern "C" {
int kqueue();
int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent* events, int eventCount,
           const struct timespec* timeout);
}
