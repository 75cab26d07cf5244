#include "libraries/ovnx-media/CodecMemory.h"

namespace ovnxmedia {

CodecMemoryUse::CodecMemoryUse() noexcept = default;
CodecMemoryUse::~CodecMemoryUse() = default;

}  // namespace ovnxmedia
