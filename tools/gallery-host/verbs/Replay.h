// Plays a recorded session to the plug-in and compares the answers.
#pragma once

#include <string>
#include <vector>

#include "gallery-host/base/Output.h"
#include "gallery-host/recording/Recorder.h"
#include "gallery-host/session/Session.h"

namespace host {

// Each message is sent once the answers that came before it in the recording are there; notifications are
// waited for, too, but not for long. `ignored` are names of members that may differ, beside those about free
// space. `recorder`, which may be null, records the session anew. Throws Failure(kExitFailed) with the first
// answer that differs.
void RunReplay(Session& session, Output& output, const std::vector<RecordedMessage>& recording,
               const std::vector<std::string>& ignored, Recorder* recorder);

}  // namespace host
