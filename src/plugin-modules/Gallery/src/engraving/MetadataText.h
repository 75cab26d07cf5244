// The text of the block that MetadataBlock.h reads, made from what the capture service tells.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/engraving/CaptureRequestInfo.h"

// The outer object, {"Source":...,"B64":...}. Throws std::range_error for a text with characters that are
// none.
std::string MakeMetadata(const CaptureRequestInfo* info);
