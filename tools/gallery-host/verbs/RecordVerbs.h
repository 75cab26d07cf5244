// The verbs that ask what is on record: show, recent and stats.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// All of these wait until the gallery is looked through and throw Failure(kExitFailed), with what is not on
// record too.

// One capture; `path` is absolute, `name` as the user wrote it.
void RunShow(Session& session, Output& output, const std::string& name, const std::string& path, bool json);

// The captures that came last, of all games.
void RunRecent(Session& session, Output& output, unsigned count, bool json);

// How many captures one game has.
void RunStats(Session& session, Output& output, const std::string& game, bool json);

}  // namespace host
