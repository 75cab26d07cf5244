// The thumbnails that file managers keep for each other in the user's cache (Thumbnail Managing Standard),
// on systems that have such a cache. No error in here is anybody's failure.
#pragma once

#include <atomic>
#include <string>

#include "libraries/ovnx-media/client/MediaLibrary.h"
#include "plugin-modules/Gallery/src/thumbnails/DrawnPicture.h"
#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"

// A picture that was just drawn from the file of the key.
struct DrawnThumbnail {
    ThumbnailCache::Key key;
    DrawnPicture picture;
};

// All functions may be called from any thread.
namespace desktop {

// The picture in the key's box, scaled down from the largest thumbnail of the file as it was at that time, if
// that is larger than the box; none otherwise. Trusts nothing that it finds.
DrawnPicture FindThumbnail(const ovnxmedia::MediaLibrary& media, const ThumbnailCache::Key& key,
                           const std::atomic<bool>& cancelled);

// Stores a thumbnail of the largest size that the picture fills, unless one of the file is there already.
void LeaveThumbnail(const ovnxmedia::MediaLibrary& media, const DrawnThumbnail& drawn);

// The URI of a whole path as file managers write it; empty for a path that they would write in another way,
// as one with "..".
std::string FileUri(const std::string& path);

// The folder of these thumbnails in the user's cache; empty where programs share none.
std::string ThumbnailsFolder();

}  // namespace desktop
