// From the file of a capture to its record.
#pragma once

#include <cstdint>
#include <string>

#include "common/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

// Fills `record`, of which id and captions stay as they are, with what the file at `path` tells. A file that
// is not the product's own is a failure, "Not a ZV File"; other failures are logged. Any thread.
KXP::RetVal InspectCapture(const std::string& path, TrackedUGC& record);

// "HH:MM:SS" in whole seconds, and milliseconds. False for 100 hours and more and for what is no number: a
// file may claim any length.
bool FormatDuration(double seconds, std::string& text, uint32_t& milliseconds);
