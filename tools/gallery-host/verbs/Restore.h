// The verb that brings captures back from the trash.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct RestoreOptions {
    std::vector<std::string> names;  // as the user wrote them; empty for those deleted last
    bool list = false;
    bool json = false;
};

// Reports a failure in one line, goes on with the next file, and throws Failure(kExitFailed) at the end.
void RunRestore(Session& session, Output& output, const RestoreOptions& options);

}  // namespace host
