// The verb settings.
#pragma once

#include <optional>
#include <string>

#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

// What is to change; what is empty stays.
struct SettingsChange {
    std::string path;  // absolute, as the next
    std::string temporary;
    std::optional<bool> cap;
    std::optional<int> capPercent;
};

// These throw Failure(kExitFailed).
void RunSettingsGet(Session& session, Output& output, bool json);
// With another folder it waits until that is looked through, as AwaitGallery does.
void RunSettingsSet(Session& session, Output& output, const SettingsChange& change, bool json);

}  // namespace host
