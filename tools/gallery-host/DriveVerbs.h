// The verb drives.
#pragma once

#include <string>

#include "common/Json.h"
#include "gallery-host/Output.h"
#include "gallery-host/Session.h"

namespace host {

// {"drives":[{"name":...,"type":...,"freeSpaceMB":...,"totalSpaceMB":...}]} as a table; the numbers may be
// missing. Pure.
std::string DriveTable(const KXP::Value& drives, bool colour);

// Throws Failure(kExitFailed); a drive that cannot be measured is listed without its numbers.
void RunDrives(Session& session, Output& output, bool json);

}  // namespace host
