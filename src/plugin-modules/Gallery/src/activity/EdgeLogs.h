// The activity logs that games leave beside their captures: files with the extension ".edgelog", one JSON
// object each.
#pragma once

#include <string>
#include <vector>

#include "plugin-modules/Gallery/src/activity/ActivityData.h"

// Appends the logs of every game folder, latest first; a log that does not name its game gets the folder's
// name. A log that is damaged, larger than 16 MiB or beyond the first 64 MiB in all is skipped with a log
// line. False when the gallery's folder cannot be read. Any thread.
bool ParseEdgeLogs(std::vector<ActivityData>& list, const std::string& galleryPath);
