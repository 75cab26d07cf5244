// The result of inspecting a media file, and the tags that identify captures.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "libraries/share-common/MetadataBlock.h"

namespace media {

// Names from PNG text or JPEG tags are the file's bytes unchanged: they need not be valid UTF-8 and may hold
// zero bytes. Whoever puts them into JSON has to convert them.
struct SniffResult : MetadataFields {
    bool isOwn = false;
    // Static texts.
    std::string_view fileType;          // "image", "video" or "other"
    std::string_view fileSource;        // "OVS_Share", "OVS_SDK", "OVS_Lumis" or "Undefined"
    std::vector<const char*> findings;  // log lines about bad content
    MetadataReader blocks;  // of this file, and of those before it that the same result was used for
};

// The ordinary result of a walk, whether the file is own or not.
constexpr int32_t kInspected = 1;

struct Tag {
    std::string_view key;
    std::string_view value;
};

// The software name that a capture tool writes, and the source that it means. Sorted by key.
inline constexpr Tag g_zvSourceTags[] = {
    {"Ovirastream LUMIS", "OVS_Lumis"},
    {"Ovirastream SDK", "OVS_SDK"},
    {"Ovirastream SHARE", "OVS_Share"},
};

// The "Source" member of the block in an MP4, and the subtype that it means.
inline constexpr Tag g_mp4EncodingTags[] = {
    {"Ovirastream SDK", "Highlight"},
    {"Ovirastream SHARE", "Normal"},
};

}  // namespace media
