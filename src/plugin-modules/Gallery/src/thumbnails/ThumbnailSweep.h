// Keeps the folder of stored thumbnails small.
#pragma once

#include <cstdint>

#include "base/FileDescriptor.h"

// The end of the names of stored thumbnails; files with other names are left alone.
constexpr const char* kThumbnailSuffix = ".png";

// Removes the thumbnails whose time is the oldest until the others take at most `maxBytes` of the disk, and
// of a few of those, chosen by chance, the ones whose file is gone. Does nothing for a closed folder. Any
// thread, and any number at once.
void SweepThumbnails(KXP::FileDescriptor folder, uint64_t maxBytes);
