// The activity logs that games leave beside their captures: files with the extension ".edgelog", one JSON
// object each.
#pragma once

#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/activity/ActivityData.h"

// Appends the logs of every game folder, the latest written first; a log that does not name its game gets the
// folder's name. A damaged log is logged and passed over, as is one larger than 16 MiB and what lies behind
// the first 64 MiB. False when the gallery's folder cannot be read. Any thread.
bool ParseEdgeLogs(std::vector<ActivityData>& list, const std::string& galleryPath);
