// Formats captures on record for people. Pure, except for the time zone.
#pragma once

#include <string>

#include "common/json/Json.h"

namespace host {

// `gallery` is {"games":[{"name":...,"ugc":[...]}]} with captures as in the answer to GetAppUGC. Each game
// that has captures gets a heading and its captures, newest first. Members of unexpected types are skipped.
std::string GalleryTable(const KXP::Value& gallery, bool colour);

// The captures of {"recents":[...]} in their order, each with the folder of its game; empty when there are
// none.
std::string RecentTable(const KXP::Value& recents, bool colour);

size_t CaptureCount(const KXP::Value& gallery);

// For example "2 games, 13 captures, 2.4 MB".
std::string GallerySummary(const KXP::Value& gallery);

}  // namespace host
