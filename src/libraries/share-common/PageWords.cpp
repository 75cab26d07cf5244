#include "libraries/share-common/PageWords.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::string_view kTypes[] = {"video", "image", "other"};

constexpr std::string_view kSubtypes[] = {
    "Highlight",
    "AnimatedGif",
    "Normal",
    "SuperResolution",
    "SuperResolution_Oversized",
    "360Mono",
    "Stereo",
    "360Stereo",
    "Exr",
    "Normal_Lumis",
    "Montage",
    "InstantReplay",
    "Manual",
    "Unknown",
};

constexpr std::string_view kSources[] = {"OVS_Share", "OVS_Lumis", "OVS_SDK", "StandAlone_Lumis",
                                         "Undefined"};

constexpr std::string_view kAudioTypes[] = {"Single", "Separate", "Unknown"};

template <size_t N>
const std::string_view& KnownOr(const std::string_view (&words)[N], std::string_view word,
                                std::string_view other) {
    const auto* known = std::find(std::begin(words), std::end(words), word);
    if (known == std::end(words)) known = std::find(std::begin(words), std::end(words), other);
    return *known;
}

}  // namespace

const std::string_view& TypeForPages(std::string_view word) {
    // The type of a highlight that is still in flight is that of its announcement.
    return KnownOr(kTypes, word, word == "screenshot" ? "image" : "other");
}

const std::string_view& SubtypeForPages(std::string_view word) {
    // Where the picture comes from is the source's matter; as a kind it is a LUMIS picture like the others.
    return KnownOr(kSubtypes, word, word == "StandAlone_Lumis" ? "Normal_Lumis" : "Unknown");
}

const std::string_view& SourceForPages(std::string_view word) {
    return KnownOr(kSources, word, "Undefined");
}

// A video that has no length yet has no audio either.
const std::string_view& AudioTypeForPages(std::string_view word) {
    return KnownOr(kAudioTypes, word, "Unknown");
}
