#include "libraries/ovnx-media/CodecMemory.h"

namespace ovnxmedia {

CodecMemoryUse::CodecMemoryUse(size_t) noexcept {}
CodecMemoryUse::~CodecMemoryUse() = default;

}  // namespace ovnxmedia
