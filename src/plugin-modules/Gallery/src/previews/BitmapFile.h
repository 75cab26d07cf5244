// The bitmap that a page hands over as text, for who reads it from the folder for temporary files.
#pragma once

#include <string>
#include <string_view>

#include "common/RetVal.h"

// Writes "ZvBitmap.bmp" in `folder`, in place of an earlier one, whole or not at all; a link that somebody
// has put there is replaced and not followed. 0x8007000D when `base64` is no base64 or its bytes are no BMP,
// 0x80004005 when the file cannot be written.
KXP::RetVal WriteBitmapFile(std::string_view base64, const std::string& folder);
