// One call of OvsXcodeRemux.
#pragma once

#include "libraries/ovnx-codelib/include/OvsXcodeApi.h"
#include "libraries/ovnx-media/client/MediaLibrary.h"

namespace codelib {

// Returns the value of the call.
int32_t Trim(const ovnxmedia::MediaLibrary& media, const ovsxcodeapi::RemuxParams& params) noexcept;

}  // namespace codelib
