// The verb settings.
#pragma once

#include <optional>
#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// What to change; empty members stay as they are.
struct SettingsChange {
    std::string path;  // absolute, as the next
    std::string temporary;
    std::optional<bool> cap;
    std::optional<int> capPercent;
};

// These throw Failure(kExitFailed).
void RunSettingsGet(Session& session, Output& output, bool json);
// After a change of the folder it waits for the scan, as AwaitGallery does.
void RunSettingsSet(Session& session, Output& output, const SettingsChange& change, bool json);

}  // namespace host
