// The verb montage: has the plug-in make one video of several captures.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct MontageInput {
    std::string path;  // absolute
    std::string type;  // "video", "image" or "audio"
};

struct MontageOptions {
    std::string recipe;
    std::vector<MontageInput> inputs;
    std::string out;  // absolute
    std::string title;
    bool json = false;
};

// By the ending of its name. Throws Failure(kExitFailed) for another one, and for what is no file.
MontageInput ReadMontageInput(const std::string& name);

// Until it is made, however long that takes. An interrupt cancels it, waits for its end and throws
// Failure(kExitInterrupted). With JSON each step is a line {"progress":12.5}, and the outcome the last one.
void RunMontage(Session& session, Output& output, const MontageOptions& options);

}  // namespace host
