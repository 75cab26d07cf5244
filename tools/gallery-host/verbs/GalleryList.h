// The list of all captures that the gallery has on record.
#pragma once

#include <string>
#include <vector>

#include "common/Json.h"
#include "gallery-host/base/Output.h"
#include "gallery-host/session/Session.h"

namespace host {

struct GalleryListing {
    std::string folder;
    KXP::Document games;  // {"games":[{"name":...,"ugc":[...]}]}
};

// All of these throw Failure(kExitFailed) for a result below zero.

// What GetSettings tells; there is a "path" in it.
KXP::Document AskSettings(Session& session);
// Whether these say that the gallery is looked through.
bool IsComplete(const KXP::Value& settings);

// The gallery's folder, once the gallery is looked through: until then the record misses captures. Waiting is
// said once, and takes no longer than the session's timeout; throws Failure(kExitNoAnswer) then.
std::string AwaitGallery(Session& session);

// The games that have captures on record; `folder` is the gallery's.
std::vector<std::string> AskGames(Session& session, const std::string& folder);

// Waits for the gallery as AwaitGallery does.
GalleryListing AskGallery(Session& session);

// Prints it as a table, or as JSON.
void RunGalleryList(Session& session, Output& output, bool json);

}  // namespace host
