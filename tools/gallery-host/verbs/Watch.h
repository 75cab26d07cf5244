// The verb watch: prints notifications as they come.
#pragma once

#include <cstdint>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct WatchOptions {
    bool json = false;
    uint64_t count = 0;  // how many notifications to print; 0: no limit
};

// Prints a line for each notification until it has printed `count` of them or the output is closed. Without a
// count, an interrupt while it watches ends it with success; any other throws Failure(kExitInterrupted).
void RunWatch(Session& session, Output& output, const WatchOptions& options);

}  // namespace host
