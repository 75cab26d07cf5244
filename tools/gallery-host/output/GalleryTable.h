// The captures on record as people read them. Pure, but for the time zone that times are shown in.
#pragma once

#include <string>

#include "common/Json.h"

namespace host {

// `gallery` is {"games":[{"name":...,"ugc":[...]}]} with captures as GetAppUGC tells them. For each game that
// has any a heading and its captures, newest first; empty when there are none. Members of unexpected types
// are passed over.
std::string GalleryTable(const KXP::Value& gallery, bool colour);

// The captures of {"recents":[...]} in their order, each with the folder of its game; empty when there are
// none.
std::string RecentTable(const KXP::Value& recents, bool colour);

size_t CaptureCount(const KXP::Value& gallery);

// For example "2 games, 13 captures, 2.4 MB".
std::string GallerySummary(const KXP::Value& gallery);

}  // namespace host
