// The verb that makes the gallery smaller.
#pragma once

#include <optional>
#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct CleanOptions {
    std::optional<double> toKB;
    std::optional<unsigned> olderThanDays;
    std::string game;  // the name of its folder
    bool all = false;  // highlights and captioned captures as well
    bool yes = false;  // else it only lists what would go
    bool json = false;
};

// Without a size, an age or a game it gets the gallery under its cap. Throws Failure(kExitFailed) when that
// cannot be reached.
void RunClean(Session& session, Output& output, const CleanOptions& options);

}  // namespace host
