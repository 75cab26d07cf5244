// One call of OvsXcodeRemux.
#pragma once

#include "libraries/ovnx-codelib/MediaLibrary.h"
#include "libraries/ovnx-codelib/include/OvsXcodeApi.h"

namespace codelib {

// Gives the call's value, and logs one line for any but 0.
int32_t Trim(const MediaLibrary& media, const ovsxcodeapi::RemuxParams& params);

}  // namespace codelib
