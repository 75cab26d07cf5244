// Makes the record of a capture from its file.
#pragma once

#include <cstdint>
#include <string>

#include "common/results/RetVal.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackedUGC.h"

struct Inspection {
    enum class Finding {
        Capture,
        NoCapture,   // by its bytes, its name or its kind; `result` has the text "Not a ZV File" or another
        Gone,        // there is no file
        Unreadable,  // it could not be inspected now, which says nothing about what it is
    };

    Finding finding = Finding::Capture;
    KXP::RetVal result;  // failed unless it is a capture
    // Of a capture, without its id and captions; of a file that was opened, its stamp.
    TrackedUGC record;
};

// Inspects the file at `path`, which is opened once. Links, pipes and folders are no captures. Failures but
// "Not a ZV File" are also logged. Any thread.
Inspection InspectCapture(const std::string& path);

// Formats as "HH:MM:SS", and in milliseconds. Returns false for 100 hours or more, a negative length and NaN:
// a file may claim any length.
bool FormatDuration(double seconds, std::string& text, uint32_t& milliseconds);
