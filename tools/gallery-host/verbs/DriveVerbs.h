// The verb drives.
#pragma once

#include <string>

#include "common/Json.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// {"drives":[{"name":...,"type":...,"freeSpaceMB":...,"totalSpaceMB":...}]} as a table; the numbers may be
// missing. Those of type "reserved" are left out unless `all`. Pure.
std::string DriveTable(const KXP::Value& drives, bool all, bool colour);

// Throws Failure(kExitFailed); a drive that cannot be measured is listed without its numbers.
// JSON has all.
void RunDrives(Session& session, Output& output, bool all, bool json);

}  // namespace host
