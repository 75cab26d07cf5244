// The bitmap that a page sends as text and that other programs read from the folder for temporary files.
#pragma once

#include <string>
#include <string_view>

#include "common/results/RetVal.h"

// Writes "ZvBitmap.bmp" in `folder`, whole or not at all, replacing an earlier one; a link is replaced and
// not followed. 0x8007000D when `base64` is not base64 or its bytes are not a BMP, 0x80004005 when the file
// cannot be written.
KXP::RetVal WriteBitmapFile(std::string_view base64, const std::string& folder);
