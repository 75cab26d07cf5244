// The verb drives.
#pragma once

#include <string>

#include "common/json/Json.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// {"drives":[{"name":...,"type":...,"freeSpaceMB":...,"totalSpaceMB":...}]} as a table; the numbers may be
// missing. Drives of type "reserved" are listed only with `all`. Pure.
std::string DriveTable(const KXP::Value& drives, bool all, bool colour);

// Throws Failure(kExitFailed). A drive that cannot be measured is listed without numbers. JSON lists all
// drives.
void RunDrives(Session& session, Output& output, bool all, bool json);

}  // namespace host
