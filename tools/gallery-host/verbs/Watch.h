// The verb watch: what the gallery notifies of, while it happens.
#pragma once

#include <cstdint>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct WatchOptions {
    bool json = false;
    uint64_t count = 0;  // notifications to end after; 0: none
};

// Writes a line for each notification, until there were as many as asked for or nobody reads the output any
// more. Without a number to come to, an interrupt while it watches is the ordinary end of it; any other
// throws Failure(kExitInterrupted).
void RunWatch(Session& session, Output& output, const WatchOptions& options);

}  // namespace host
