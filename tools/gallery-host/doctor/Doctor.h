// The verb that looks at everything that can keep the gallery from working. It needs no plug-in that works.
#pragma once

#include <string>

#include "gallery-host/base/Output.h"

namespace host {

struct DoctorOptions {
    std::string plugin;  // path of the library
    bool fix = false;    // mend what is safe to mend
    bool json = false;
};

// Prints a line for each thing that was looked at. Throws Failure(kExitFailed) when something is wrong.
// Call it before there are threads.
void RunDoctor(Output& output, const DoctorOptions& options);

}  // namespace host
