// Thumbnails as they are stored on disk: the PNG of the answer with text chunks after its header, the label,
// which say what it is a picture of. No other byte differs: without them it is the answer again.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "plugin-modules/Gallery/src/thumbnails/ThumbnailCache.h"

// No label and no start of a file that is needed to read its path is longer.
constexpr size_t kMaxLabelBytes = 8192;

// Path, time in nanoseconds, size, box, and the version of the software that has drawn the picture. Throws
// std::bad_alloc, like all of these.
std::string LabelOf(const ThumbnailCache::Key& key);

// The label by which the desktop's programs recognise a thumbnail. The time is in seconds since 1970.
std::string DesktopLabelOf(const std::string& uri, int64_t seconds, uint64_t size);

// Empty for what is too short for a PNG.
KXP::SlabString AddLabel(std::string_view png, std::string_view label);

// Takes the label out of a file. False, with `file` as it was, for anything but a whole PNG with this label:
// the lengths and the check sums of all its chunks are looked at.
bool TakeLabel(KXP::SlabString& file, std::string_view label);

// The path in the label at the start of a file; empty when there is none.
std::string_view LabelledPath(std::string_view start);
