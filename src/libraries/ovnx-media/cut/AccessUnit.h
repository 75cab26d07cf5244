// What the units of H.264 and HEVC within a sample say about decoding.
#pragma once

#include <cstdint>
#include <string_view>

#include "libraries/ovnx-media/SourceFile.h"
#include "libraries/ovnx-media/cut/Sample.h"

namespace ovnxmedia {

enum class NalCoding { Other, H264, Hevc };

// How the samples of a track are divided into units.
struct NalFormat {
    NalCoding coding = NalCoding::Other;
    uint32_t lengthSize = 4;  // of the length in front of each unit
};

// By a sample description: the content of its box.
NalFormat NalFormatOf(std::string_view entryType, std::string_view entry);

struct AccessUnit {
    bool isRefresh = false;  // nothing from before is needed
    bool hasRecoveryPoint =
        false;  // all is whole after `recoveryPictures` more pictures that are referred to
    uint32_t recoveryPictures = 0;
    bool isReference = true;  // others may refer to it
};

AccessUnit ReadAccessUnit(SourceFile& file, const Sample& sample, const NalFormat& format);

}  // namespace ovnxmedia
