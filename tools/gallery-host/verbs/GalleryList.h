// Lists all captures on record.
#pragma once

#include <string>
#include <vector>

#include "common/json/Json.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct GalleryListing {
    std::string folder;
    KXP::Document games;  // {"games":[{"name":...,"ugc":[...]}]}
};

// All of these throw Failure(kExitFailed) for a result below zero.

// The answer to GetSettings, which has a "path".
KXP::Document AskSettings(Session& session);
// Whether the gallery is scanned, according to the settings.
bool IsComplete(const KXP::Value& settings);

// Waits until the gallery is scanned and returns its folder: before that, captures are missing from the
// record. Reports once that it waits, and throws Failure(kExitNoAnswer) after the session's timeout.
std::string AwaitGallery(Session& session);

// The games with captures on record; `folder` is the gallery's.
std::vector<std::string> AskGames(Session& session, const std::string& folder);

// Waits for the gallery as AwaitGallery does.
GalleryListing AskGallery(Session& session);

// Prints it as a table, or as JSON.
void RunGalleryList(Session& session, Output& output, bool json);

}  // namespace host
