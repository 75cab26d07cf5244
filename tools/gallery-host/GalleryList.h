// The list of all captures that the gallery has on record.
#pragma once

#include <string>

#include "common/Json.h"
#include "gallery-host/Output.h"
#include "gallery-host/Session.h"

namespace host {

struct GalleryListing {
    std::string folder;
    KXP::Document games;  // {"games":[{"name":...,"ugc":[...]}]}
};

// Waits until the gallery is complete, which is said once, but no longer than the session's timeout; throws
// Failure(kExitNoAnswer) then and Failure(kExitFailed) for a result below zero.
GalleryListing AskGallery(Session& session);

// Prints it as a table, or as JSON.
void RunGalleryList(Session& session, Output& output, bool json);

}  // namespace host
