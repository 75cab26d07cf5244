// The verb montage: makes one video of several captures.
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

// Finds the type by the extension. Throws Failure(kExitFailed) for an unknown one, and if there is no such
// file.
MontageInput ReadMontageInput(const std::string& name);

// Waits for the montage without a limit. An interrupt cancels it, waits for its end and throws
// Failure(kExitInterrupted). With JSON each step is a line {"progress":12.5}, and the outcome is the last
// line.
void RunMontage(Session& session, Output& output, const MontageOptions& options);

}  // namespace host
