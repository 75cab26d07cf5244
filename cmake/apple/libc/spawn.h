// What Darwin adds to the attributes of a new process.
#pragma once

#include_next <spawn.h>

#define POSIX_SPAWN_SETSID 0x0400
#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000
