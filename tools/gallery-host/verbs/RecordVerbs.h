// The verbs that show what is on record: show, recent and stats.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// All of these wait until the gallery is scanned. They throw Failure(kExitFailed), also for what is not on
// record.

// One capture; `path` is absolute, `name` as the user wrote it.
void RunShow(Session& session, Output& output, const std::string& name, const std::string& path, bool json);

// The latest captures of all games.
void RunRecent(Session& session, Output& output, unsigned count, bool json);

// The number of captures of a game.
void RunStats(Session& session, Output& output, const std::string& game, bool json);

}  // namespace host
