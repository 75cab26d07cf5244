// Makes the record of a capture from its file.
#pragma once

#include <cstdint>
#include <string>

#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Fills `record`, except its id and captions, from the file at `path`. A file that is not the product's own
// is a failure with the text "Not a ZV File"; other failures are also logged. Any thread.
KXP::RetVal InspectCapture(const std::string& path, TrackedUGC& record);

// Formats as "HH:MM:SS", and in milliseconds. Returns false for 100 hours or more, a negative length and NaN:
// a file may claim any length.
bool FormatDuration(double seconds, std::string& text, uint32_t& milliseconds);
