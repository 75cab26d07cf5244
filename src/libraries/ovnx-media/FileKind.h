// What a file is by its first bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "OvnxMedia.h"
#include "libraries/ovnx-media/SourceFile.h"

namespace ovnxmedia {

// The name of the demuxer for a file with these first bytes, of which kStartSize suffice; null when there is
// none.
constexpr size_t kStartSize = 8;
const char* DemuxerOf(std::string_view start);

// The same also for Flash video and MPEG transport streams, for which it takes kLongStartSize.
constexpr size_t kLongStartSize = 400;
const char* AnyDemuxerOf(std::string_view start);

enum class StillFormat { None, Png, Jpeg, Exr };
StillFormat StillFormatOf(std::string_view start);

// The first kStartSize bytes, or what there is of them. Throws Failure when the file cannot be read.
std::string StartOf(SourceFile& file);

// Throws Failure when the file cannot be read.
OvnxMediaKind ProbeKind(SourceFile& file);

}  // namespace ovnxmedia
