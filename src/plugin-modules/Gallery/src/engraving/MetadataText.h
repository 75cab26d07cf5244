// Makes the text of the block that MetadataBlock.h reads from what the capture service reports.
#pragma once

#include <string>

#include "plugin-modules/Gallery/src/engraving/CaptureRequestInfo.h"

// The outer object, {"Source":...,"B64":...}. Throws std::range_error for a text that is not valid Unicode.
std::string MakeMetadata(const CaptureRequestInfo* info);

// The same facts as one flat object without base64.
std::string MakeMetadataOvs(const CaptureRequestInfo* info);
