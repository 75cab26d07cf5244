// Imports the recordings of a folder one by one, as they are finished.
#pragma once

#include <string>

#include "gallery-host/session/Session.h"
#include "gallery-host/verbs/ImportRun.h"

namespace host {

// First those that are there, then each that comes, until an interrupt. A file that cannot be imported is
// reported. Throws Failure when the folder cannot be watched.
void FollowFolder(Session& session, ImportRun& run, const std::string& folder, const std::string& gallery);

}  // namespace host
