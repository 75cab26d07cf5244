// Reads a tracker's file in the layout that WriteTrackerJSON gives it, piece by piece: a large file is never
// in memory as a whole, and its records need neither the general parser nor its values.
#pragma once

#include <vector>

#include "base/ReadWrite.h"
#include "common/json/Json.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Replaces `records` by those of the file and `rest` by what it holds beside them, exactly as the parser and
// ParseUGCFromJSON would. False when anything in it looks different, which may well be valid: `records` and
// `rest` are then not to be used. The descriptor's position stays.
bool ReadOwnLayout(KXP::DescriptorRef file, std::vector<NewUGC>& records, KXP::Document& rest);
